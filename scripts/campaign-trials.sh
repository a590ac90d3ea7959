#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Answers 100,000 trials (5,000 tokens, 20 times each) without sound, compares all results with a tally of their
# own, and prints what a trial costs in time and memory over the course of the session.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset release
cmake --build --preset release --target tst_manytrials

OSTRINE_TEST_TOKENS=5000 QTEST_FUNCTION_TIMEOUT=3600000 \
    build/release/tests/gui/tst_manytrials -maxwarnings 0
