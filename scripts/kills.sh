#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds the program, kills it N times (200 by default), each at another time of a session of 40 trials, and checks
# that each answer given more than a second before is in the session's journal. SEED (1 by default) decides the
# times and the answers. Twelve programs run at the same time; 200 kills take about ten minutes.
#
#   kills.sh [N [SEED]]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh test
cmake --preset release
cmake --build --preset release --target ostrine ostrine-tools

folder=build/release
report=$folder/kills.txt
code=0
tests/e2e/side-by-side.sh 12 /usr/bin/python3 -B tests/e2e/test_kills.py \
    "$folder/src/ostrine" "$folder/src/ostrine-tools" \
    --kills "${1:-200}" --trials 40 --seed "${2:-1}" >"$report" || code=$?
sort -V "$report"
awk '/^kill .* answers given/ { ++kills; given += $7; kept += $10 }
     /FAILED/ { ++failed }
     END { printf "%d kills, of which %d failed. In the others %d answers were given and %d kept; %s\n",
                  kills + failed, failed, given, kept, "the rest was given less than a second before." }' "$report"
exit "$code"
