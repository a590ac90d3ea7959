#!/usr/bin/env bash
# Fails when a source file is not as clang-format 14 would write it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mapfile -t files < <(find src tests bench -name '*.cpp' -o -name '*.h')
[ ${#files[@]} -gt 0 ]
clang-format-14 --dry-run -Werror "${files[@]}"
