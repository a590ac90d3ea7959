#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when a private session does not hand on its command's exit code, or when it leaves a process or a temporary
# file behind.
set -euo pipefail
session=$(dirname "${BASH_SOURCE[0]}")/../scripts/private-session.sh
TMPDIR=$(mktemp -d)
export TMPDIR
# A duration nobody else sleeps for, to know our own processes by.
nap=1000.$$
clean_up() {
    local pid
    for pid in $(pgrep -xf "sleep $nap"); do
        kill -KILL "$pid"
    done
    rm -rf "$TMPDIR"
}
trap clean_up EXIT

# expect CODE ARGUMENT...: the session with these arguments ends with CODE and leaves nothing.
expect() {
    local expected=$1 code=0
    shift
    "$session" "$@" || code=$?
    if [ "$code" -ne "$expected" ] || [ -n "$(ls -A "$TMPDIR")" ] || pgrep -xf "sleep $nap" >/dev/null; then
        echo "after \"$*\": exit code $code instead of $expected, or something is left:"
        ls -A "$TMPDIR"
        pgrep -axf "sleep $nap" || true
        return 1
    fi
}

expect 0 true
expect 7 bash -c 'exit 7'
expect 125 --unknown-option true
expect 125
expect 0 bash -c "sleep $nap &"
# One that does not mind being asked to end
expect 0 bash -c "trap '' TERM; sleep $nap &"
# One in a process group of its own, as an interactive shell makes them
expect 0 bash -c "set -m; sleep $nap &"
# Told to end while its command runs: the outside is the parent of the inside, which is the command's.
expect 143 bash -c "sleep $nap & kill -TERM \$(ps -o ppid= -p \$PPID); wait"

# Killed, the outside cannot clean up any more, but everything inside ends.
{ "$session" bash -c "sleep $nap & kill -KILL \$(ps -o ppid= -p \$PPID); wait" || true; } 2>/dev/null
timeout 10 bash -c "while pgrep -xf 'sleep $nap'; do sleep 0.1; done"
