#!/usr/bin/env bash
# Installs what is missing, builds the program and runs every test: all of them on the program as it is
# used, then those without sound again under the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
start=$SECONDS

scripts/setup.sh test

# Private, so that what a test leaves behind is seen at the end.
TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-test.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

options=()
# On the build server a warning is a failure; at the desk it must not stop somebody trying things out.
if [ -n "${CI:-}" ] && [ "${CI}" != false ]; then
    options+=(-DOSTRINE_WARNINGS_AS_ERRORS=ON)
fi

for preset in release asan; do
    echo "== $preset: build"
    cmake --preset "$preset" ${options[@]+"${options[@]}"}
    cmake --build --preset "$preset"
    echo "== $preset: test"
    ctest --preset "$preset"
done

leftovers=$(ls -A "$TMPDIR")
if [ -n "$leftovers" ]; then
    echo "The tests have left temporary files behind:" >&2
    echo "$leftovers" >&2
    exit 1
fi

echo "All tests passed: release (all) and asan (unit, gui), in $((SECONDS - start)) s."
