#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when "cmake --install" does not install exactly the files in installed-files.txt and the manual's pictures, or
# when anything but the two programs can be run.
#
#   check-install.sh BUILD_FOLDER
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix"
export LC_ALL=C
diff <({ cat "$here/installed-files.txt"
         find "$here/../../docs/images" -type f -printf 'share/doc/ostrine/manual/images/%P\n'; } | sort) \
     <(find "$prefix" ! -type d -printf '%P\n' | sort)
diff <(printf 'bin/ostrine\nbin/ostrine-tools\n') <(find "$prefix" -type f -perm /111 -printf '%P\n' | sort)
