#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails unless the program holds every function of the signal toolkit once. No window calls them, so
# that a linker may leave them out without a word.
#
#   toolkit-in-program.sh <nm> <program>
set -euo pipefail

functions=(
    'whiteNoise(int)'
    'sine(double, double, double, double, double)'
    'sam(double, double, double, double, double, double, double, double, bool)'
    'cosRamp(QList<double>, int)'
    'cosRamp(QList<double>*, int)'
    'cos2Ramp(QList<double>, int)'
    'cos2Ramp(QList<double>*, int)'
    'linearRamp(QList<double>, int)'
    'linearRamp(QList<double>*, int)'
    'randomInteger(int, int)'
    'randomIntegers(int, int, int)'
    'rms(QList<int>)'
    'rms(QList<double>)'
)

# Code of external linkage, one "<address> T <function>" a line.
symbols=$("$1" --demangle --defined-only "$2" | sed -n 's/^[0-9a-f]* T //p')

missing=0
for function in "${functions[@]}"; do
    if [ "$(grep -cFx -- "$function" <<<"$symbols")" -ne 1 ]; then
        echo "not once in $2: $function" >&2
        missing=$((missing + 1))
    fi
done
[ "$missing" -eq 0 ]
echo "all ${#functions[@]} functions are in $2"
