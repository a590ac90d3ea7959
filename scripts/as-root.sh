# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash disable=SC2034
# To be sourced: sets the array as_root to what must stand before a command that only root may run. Fails when this
# user may not run such a command.
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && { sudo -n true 2>/dev/null || { [ -t 0 ] && sudo -v; }; }; then
        as_root=(sudo)
    else
        return 1
    fi
fi
