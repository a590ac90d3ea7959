#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Builds fftreal_portable.cpp by another compiler, warnings being errors, and runs it.
#
#   fftreal-portable.sh <compiler> <emulator> [compiler options...]
#
# The emulator runs what is made for another kind of processor; it is empty for this one. Where one of
# the two is not installed, the test is skipped (status 77), but on the build server it fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
compiler=$1
emulator=$2
shift 2

for tool in "$compiler" ${emulator:+"$emulator"}; do
    if ! command -v "$tool" >/dev/null; then
        echo "$tool is not installed (scripts/setup.sh does that): the transform is not tested by it"
        if [ -n "${CI:-}" ] && [ "${CI}" != false ]; then
            exit 1
        fi
        exit 77
    fi
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Linked statically, the emulator needs no libraries of the other system.
"$compiler" -std=c++20 -O2 "$@" -Werror ${emulator:+-static} -I src -I tests \
    -o "$folder/program" tests/unit/fftreal_portable.cpp
${emulator:+"$emulator"} "$folder/program"
