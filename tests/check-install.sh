#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when "cmake --install" does not install the two programs, or installs more than that.
#
#   check-install.sh BUILD_FOLDER
set -euo pipefail
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix"
[ "$(find "$prefix" -type f -perm -u=x -printf '%P\n' | sort | xargs)" = "bin/ostrine bin/ostrine-tools" ]
[ "$(find "$prefix" -type f | wc -l)" -eq 2 ]
