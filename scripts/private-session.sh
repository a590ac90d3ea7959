#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command in an environment of its own: runtime folder, home folder, session bus and, on request, a display
# and a sound server. The command neither sees nor changes the caller's desktop and plays nothing on it. Several
# of these environments can run at the same time, and everything started in one is stopped at the end.
#
#   private-session.sh [--audio] [--period SAMPLES] [--pulseaudio] [--display] [--awake]
#                      COMMAND [ARGUMENT...]
#
#   --display         an Xvfb screen of 1440 x 900 with the openbox window manager
#   --audio           PipeWire with the virtual output "out" (48 kHz, mono) as the default; what is
#                     played can be recorded from "out.monitor"
#   --period SAMPLES  PipeWire's period, 2048 by default
#   --pulseaudio      PulseAudio instead of PipeWire
#   --awake           keeps idle processors from sleeping: a virtual processor may take tens of milliseconds to
#                     wake up; needs write access to /dev/cpu_dma_latency
#
# The exit code is COMMAND's, or 125 if the environment itself could not be set up.
set -euo pipefail

folder=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-session.XXXXXXXX")

# setsid puts everything that is started there into one process group, so that children of children can be
# stopped too. The group's leader gets a signal if this script is killed before it can clean up.
setsid setpriv --pdeathsig TERM "$(dirname "${BASH_SOURCE[0]}")/private-session/start.sh" "$folder" "$@" <&0 &
group=$!

# Zombies do not count.
any_alive() { pgrep -s "$group" -r D,R,S,T,t >/dev/null; }

clean_up() {
    local code=$? signal i
    trap '' HUP INT TERM
    for signal in TERM KILL; do
        kill "-$signal" -- "-$group" 2>/dev/null || break
        for ((i = 0; i < 30; ++i)); do
            any_alive || break 2
            sleep 0.1
        done
    done
    rm -rf "$folder"
    exit "$code"
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

wait "$group"
