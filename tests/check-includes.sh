#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Fails when a file of src includes what it may not:
# - tools stands above app, app above subject and timing, and these above audio, data and plots. Those side by side
#   know nothing of each other. An include may point down, never up or across. MainWindow_*.cpp counts as app wherever it lies, since it
#   defines members of app's MainWindow.
# - A file of ostrine_core includes nothing of Qt but Qt Core, and of our own nothing but ostrine_core.
#
#   check-includes.sh QT-CORE-FOLDER CORE-FILE...     the files as seen from src
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../src"
qt_core=$1
shift
core=" $* "
if [ ! -e "$qt_core/QString" ] || [ $# -eq 0 ]; then
    echo "check-includes: $qt_core is not the folder of Qt Core, or no file of ostrine_core is given" >&2
    exit 1
fi

room() {
    case $1 in
        */MainWindow_*.cpp) echo app ;;
        *) echo "${1%%/*}" ;;
    esac
}

height() {
    case $1 in
        tools) echo 4 ;;
        app) echo 3 ;;
        subject | timing) echo 2 ;;
        audio | data | plots) echo 1 ;;
        *) echo "check-includes: the folder $1 has no place in the order" >&2; return 1 ;;
    esac
}

checked=0
findings=0
finding() {
    echo "src/$1:$2: $3" >&2
    findings=$((findings + 1))
}

while IFS=: read -r file line text; do
    [[ $text =~ include[[:space:]]*([\"<])([^\">]+) ]]
    kind=${BASH_REMATCH[1]}
    included=${BASH_REMATCH[2]}
    checked=$((checked + 1))
    if [ "$kind" = '"' ]; then
        from=$(room "$file")
        to=$(room "$included")
        from_height=$(height "$from")
        to_height=$(height "$to")
        if [ "$from" != "$to" ] && [ "$from_height" -le "$to_height" ]; then
            finding "$file" "$line" "$from may not include $included"
        fi
        if [[ $core == *" $file "* && $core != *" $included "* ]]; then
            finding "$file" "$line" "ostrine_core may not include $included, which is outside of it"
        fi
    elif [[ $core == *" $file "* && $included == [Qq]* && ! -e $qt_core/${included#QtCore/} ]]; then
        finding "$file" "$line" "ostrine_core may not include <$included>, which is not in Qt Core"
    fi
done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include' --include='*.h' --include='*.cpp' . | sed 's|^\./||')

[ "$checked" -gt 0 ]
echo "$checked includes, $findings of them wrong"
[ "$findings" -eq 0 ]
