#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Divides work among private sessions that run at the same time: each runs the command with the arguments
# "--shared FILE" added, an empty file in which they count what they have taken. What they have printed follows when
# all have ended, one after another. Fails when one of them has failed.
#
#   side-by-side.sh SESSIONS COMMAND [ARGUMENT...]
set -euo pipefail

sessions=${1:?how many sessions?}
shift
private_session=$(dirname "${BASH_SOURCE[0]}")/../../scripts/private-session.sh

folder=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-test.XXXXXXXX")
running=()
clean_up() {
    local code=$?
    trap '' HUP INT TERM
    if [ ${#running[@]} -gt 0 ]; then
        # Each cleans up after itself before it ends.
        kill "${running[@]}" 2>/dev/null || true
        wait
    fi
    rm -rf "$folder"
    exit "$code"
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

touch "$folder/shared"
for ((part = 1; part <= sessions; ++part)); do
    "$private_session" --audio --display "$@" --shared "$folder/shared" >"$folder/$part" 2>&1 </dev/null &
    running+=($!)
done

failed=0
for ((part = 1; part <= sessions; ++part)); do
    wait "${running[part - 1]}" || failed=1
    cat "$folder/$part"
done
running=()
exit "$failed"
