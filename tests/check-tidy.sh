#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when clang-tidy 14 finds something in src; other versions find other things. Ends with 77, for "not checked",
# where a distribution does not have that version.
#
#   check-tidy.sh BUILD-FOLDER     where compile_commands.json tells how each file is compiled
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v clang-tidy-14 >/dev/null; then
    echo "src is not analysed: clang-tidy-14 is not installed."
    exit 77
fi
mapfile -t files < <(find src -name '*.cpp')
[ ${#files[@]} -gt 0 ]
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy-14 --quiet -p "$1"
