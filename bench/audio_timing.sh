#!/usr/bin/env bash
# Measures when tokens are heard and when the reaction clock starts, on sound servers of its own.
#
#   audio_timing.sh [plays per condition, 50]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

for server in "--period 1024" "--period 256" "--period 2048" --pulseaudio; do
    echo
    echo "### ${server#--}"
    echo
    # shellcheck disable=SC2086 # an option and its value
    scripts/private-session.sh --audio $server env QT_QPA_PLATFORM=offscreen \
        build/bench/bench/audio_timing "${1:-50}"
done
