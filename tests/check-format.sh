#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when a source file is not as clang-format 14 would write it; other versions write it otherwise. Ends with 77,
# for "not checked", where a distribution does not have that version.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v clang-format-14 >/dev/null; then
    echo "The format is not checked: clang-format-14 is not installed."
    exit 77
fi
mapfile -t files < <(find src tests bench -name '*.cpp' -o -name '*.h')
[ ${#files[@]} -gt 0 ]
clang-format-14 --dry-run -Werror "${files[@]}"
