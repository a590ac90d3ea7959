#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the benchmarks and prints their tables, which bench/README.md explains.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh bench
cmake --preset bench
cmake --build --preset bench

for benchmark in build/bench/bench/bench_*; do
    if [ -x "$benchmark" ] && [ -f "$benchmark" ]; then
        echo
        QT_QPA_PLATFORM=offscreen bench/compare.py "$benchmark"
    fi
done

echo
QT_QPA_PLATFORM=offscreen bench/startup.py build/bench
