#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes the pictures in docs/images anew: installs what is missing, builds both programs, and lets a script operate
# them on a virtual screen with a virtual sound output. Look at the pictures before you commit them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if [ "${1:-}" != inside ]; then
    scripts/setup.sh demo
    cmake --preset release -DOSTRINE_BUILD_TESTS=OFF
    cmake --build --preset release --target ostrine ostrine-tools
    # With mounts of its own, the home folder can have a path that fits a manual.
    exec unshare --user --map-root-user --mount \
        scripts/private-session.sh --audio --display "$PWD/scripts/screenshots.sh" inside
fi

# The checkout may be in a home folder, which is about to disappear.
mount --bind . /mnt
mount -t tmpfs none /home
mkdir /home/operator
mount --bind "$HOME" /home/operator
export HOME=/home/operator
cd /mnt
/usr/bin/python3 -B tests/e2e/manual_pictures.py build/release/src/{ostrine,ostrine-tools} docs/images
