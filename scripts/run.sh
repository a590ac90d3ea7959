#!/usr/bin/env bash
# Installs what is missing, builds and starts the program. Without a screen it shows the program at
# work in a demo session on a virtual one and leaves the pictures and result files.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [ -n "${DISPLAY:-}" ]; then
    packages=(run)
elif [ -n "${WAYLAND_DISPLAY:-}" ]; then
    packages=(run wayland)
    # Not every version of Qt looks for such a screen by itself.
    export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-wayland}
else
    packages=(demo)
fi

scripts/setup.sh "${packages[@]}"
# Without the tests, which look for packages of their own.
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
