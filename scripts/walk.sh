#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# A long random walk through both windows under the address and undefined-behaviour sanitizers. It prints how often
# each event was met in each state. A failure prints the seed and the last events; the same seed walks the same way.
#
#   walk.sh STEPS [SEED]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
steps=${1:?usage: walk.sh STEPS [SEED]}
seed=${2:-}

cmake --preset asan
cmake --build --preset asan --target tst_walk
LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0 \
    OSTRINE_WALK_STEPS=$steps OSTRINE_WALK_SEED=$seed QTEST_FUNCTION_TIMEOUT=86400000 \
    scripts/private-session.sh build/asan/tests/walk/tst_walk
