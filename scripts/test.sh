#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the program and runs every test: first all of them on the release build, then the
# unit and window tests again under the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
start=$SECONDS

scripts/setup.sh test

# A private folder, so that files left behind by a test are found at the end.
TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-test.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# Warnings are errors on the build server, but must not stop a developer who is trying things out.
presets=(release asan)
if [ -n "${CI:-}" ] && [ "${CI}" != false ]; then
    presets=(ci ci-asan)
fi

for preset in "${presets[@]}"; do
    echo "== $preset: build"
    cmake --preset "$preset"
    cmake --build --preset "$preset"
    echo "== $preset: test"
    ctest --preset "$preset" --parallel $((2 * $(nproc)))
done

leftovers=$(ls -A "$TMPDIR")
if [ -n "$leftovers" ]; then
    echo "The tests have left temporary files behind:" >&2
    echo "$leftovers" >&2
    exit 1
fi

echo "All tests passed: ${presets[0]} (all) and ${presets[1]} (unit, gui), in $((SECONDS - start)) s."
