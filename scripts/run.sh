#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the program and starts it. Without a screen it runs a demo session on a virtual
# one instead, and leaves screenshots and result files.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [ -n "${DISPLAY:-}" ]; then
    packages=(run)
elif [ -n "${WAYLAND_DISPLAY:-}" ]; then
    packages=(run wayland)
    # Not every version of Qt chooses Wayland by itself.
    export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-wayland}
else
    packages=(demo)
fi

scripts/setup.sh "${packages[@]}"
# Without the tests, which need further packages.
cmake --preset release -DOSTRINE_BUILD_TESTS=OFF
cmake --build --preset release --target ostrine

program=build/release/src/ostrine
if [ "${packages[0]}" = run ]; then
    exec "$program"
fi

echo "There is no screen here (neither DISPLAY nor WAYLAND_DISPLAY is set): running a demo session on a"
echo "virtual one instead."
exec scripts/private-session.sh --audio --display \
    /usr/bin/python3 tests/e2e/demo_session.py "$program"
