#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the programs and makes a Debian package of them, for the release of Debian on which
# it runs. The last line it prints is the path of the package.
#
#   package.sh [--install]
#
#   --install  also installs the package, with the packages that it depends on
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if [ $# -gt 1 ] || [ "${1:---install}" != --install ]; then
    echo "usage: package.sh [--install]" >&2
    exit 2
fi

scripts/setup.sh package
# Without the tests, which need further packages.
cmake --preset release -DOSTRINE_BUILD_TESTS=OFF
cmake --build --preset release
# Emptied, so that it never holds the package of another version.
folder=build/release/package
rm -rf "$folder"
cpack --config build/release/CPackConfig.cmake -B "$folder"
package=$(echo "$PWD/$folder"/*.deb)

if [ "${1:-}" = --install ]; then
    # As in setup.sh, nothing is removed. A package of the same version is replaced.
    install=(apt-get install -y --no-install-recommends --no-remove --reinstall "$package")
    if ! source scripts/as-root.sh; then
        echo "package: this user may not install packages. As root, run:" >&2
        echo "    ${install[*]}" >&2
        exit 1
    fi
    "${as_root[@]}" "${install[@]}"
fi
echo "$package"
