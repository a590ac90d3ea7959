#!/usr/bin/env bash
# Installs what is missing, builds and starts the program. Without a screen it shows the program at
# work in a demo session on a virtual one and leaves the pictures and result files.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
cmake --preset release
cmake --build --preset release --target ostrine

program=build/release/src/ostrine
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec "$program"
fi

echo "There is no screen here (neither DISPLAY nor WAYLAND_DISPLAY is set): running a demo session on a"
echo "virtual one instead."
exec scripts/private-session.sh --audio --display \
    /usr/bin/python3 tests/e2e/demo_session.py "$program"
