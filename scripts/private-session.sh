#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs a command in an environment of its own: runtime folder, home folder, session bus and, on request, a display
# and a sound server. The command neither sees nor changes the caller's desktop and plays nothing on it. Several
# of these environments can run at the same time, and everything started in one is stopped at the end.
#
#   private-session.sh [OPTION...] COMMAND [ARGUMENT...]
#
#   --display         an Xvfb screen of 1440 x 900 with the openbox window manager
#   --audio           PipeWire with the virtual output "out" (48 kHz, mono), which can be recorded as "out.monitor"
#   --period SAMPLES  PipeWire's period, 2048 by default
#   --pulseaudio      PulseAudio instead of PipeWire
#   --awake           keeps idle processors from sleeping: a virtual processor may take tens of milliseconds to
#                     wake up; needs write access to /dev/cpu_dma_latency
#
# The exit code is COMMAND's, or 125 if the environment itself could not be set up.
set -euo pipefail

folder='' session=''
clean_up() {
    local code=$? signal i
    trap '' HUP INT TERM
    # The processes are asked to end, and killed after three seconds; signal 0 only checks whether any are left.
    # Zombies do not count.
    for ((i = 0; i < 60; ++i)); do
        case $i in 0) signal=TERM ;; 30) signal=KILL ;; *) signal=0 ;; esac
        pkill "-$signal" -s "$session" -r D,R,S,T,t 2>/dev/null || break
        sleep 0.1
    done
    rm -rf "$folder"
    exit "$code"
}
# Set before there is anything to clean up, so that a signal at any time leaves nothing behind.
trap clean_up EXIT
trap 'exit 143' HUP INT TERM

folder=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-session.XXXXXXXX")

# A session in the kernel's sense includes children of children, so that all can be stopped. Its leader gets a
# signal if this script is killed before it can clean up.
setsid setpriv --pdeathsig TERM "$(dirname "${BASH_SOURCE[0]}")/private-session/start.sh" "$folder" "$@" <&0 &
session=$!
wait "$session"
