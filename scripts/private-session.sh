#!/usr/bin/env bash
# Runs a command in an environment of its own: runtime folder, home folder, session bus and, on request,
# a display and a sound server. Nothing of the caller's desktop is seen, heard or changed, several
# of these may run side by side, and everything started here is stopped at the end.
#
#   private-session.sh [--audio] [--period SAMPLES] [--pulseaudio] [--display] [--awake]
#                      COMMAND [ARGUMENT...]
#
#   --display         an Xvfb screen of 1440 x 900 with the openbox window manager
#   --audio           PipeWire with the virtual output "out" (48 kHz, mono) as the default; what is
#                     played can be recorded from "out.monitor"
#   --period SAMPLES  PipeWire's period, 2048 if nothing else is said
#   --pulseaudio      PulseAudio in the place of PipeWire
#   --awake           no processor sleeps when it has nothing to do: a virtual one may be late by tens
#                     of milliseconds to wake up; needs write access to /dev/cpu_dma_latency
#
# The exit code is COMMAND's; 125 when the environment itself could not be set up.
set -euo pipefail

folder=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-session.XXXXXXXX")

# A session of its own makes one process group of all that is started in it, so that helpers of helpers can be
# ended too. It is told when this script is killed without a chance to clean up.
setsid setpriv --pdeathsig TERM "$(dirname "${BASH_SOURCE[0]}")/private-session/start.sh" "$folder" "$@" <&0 &
group=$!

# The dead which nobody has collected yet do not count.
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
