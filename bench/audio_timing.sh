#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Measures when tokens are heard and when the reaction clock starts, on sound servers of its own. The
# processors are kept awake if the user may do that. Only the tables are printed; the program's log
# goes to build/bench/audio_timing.log.
#
#   audio_timing.sh [plays per condition, 50]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

awake=
if [ -w /dev/cpu_dma_latency ]; then
    awake=--awake
fi
log=build/bench/audio_timing.log
: >"$log"
for server in "--period 1024" "--period 256" "--period 2048" --pulseaudio; do
    if [ "$server" = --pulseaudio ] && ! command -v pulseaudio >/dev/null; then
        echo
        echo "PulseAudio is not installed (scripts/setup.sh bench-pulseaudio), so it is not measured."
        continue
    fi
    echo
    echo "### ${server#--}${awake:+, processors kept awake}"
    echo
    # shellcheck disable=SC2086 # options and their values
    scripts/private-session.sh $awake --audio $server env QT_QPA_PLATFORM=offscreen \
        build/bench/bench/audio_timing "${1:-50}" 2>>"$log"
done
