#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the unit and window tests and runs them under valgrind's memcheck, which finds uses
# of values that were never set, wrong accesses to memory, and leaks. docs/reliability.md gives the last figures.
#
#   valgrind.sh [-R REGEX]     only the tests whose names match, as in ctest
#
# Ends with 1 when there is a finding or a test fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

excluded=(
    # Not programs that are built here: valgrind would examine the shell
    toolkit_in_program fftreal_clang fftreal_arm64
    # Play sound, and a program that is 30 times slower cannot keep up with it
    tst_session tst_oddfolder tst_experimentwindow tst_tokenspage tst_timingpage
    # Compares the memory of its process, to which valgrind adds its own
    tst_manytrials
    # One function each of a test that is run anyway, on another screen
    '.*_1440x900' '.*_2x'
    # Need the 64 significant bits of long double, where valgrind computes with the 53 of double
    tst_fftreal_longdouble fftreal_portable tst_toolkittones
)

scripts/setup.sh valgrind
cmake --preset dev
# For a test that has not been built yet, ctest also lists where it has looked for it.
mapfile -t tests < <(ctest --preset dev -N -L '^(unit|gui)$' -E "^($(IFS='|' && echo "${excluded[*]}"))\$" "$@" 2>&1 |
    sed -n 's/^ *Test *#[0-9]*: //p')
if [ ${#tests[@]} -eq 0 ]; then
    echo "valgrind: no test matches" >&2
    exit 2
fi
cmake --build --preset dev --target "${tests[@]}"

options=(
    --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite --show-leak-kinds=definite
    --num-callers=30 --suppressions=tests/valgrind.supp
    # A test of the transform counts allocations by an operator new of its own, which valgrind must not replace
    --soname-synonyms=somalloc=nouserintercepts
)
# Set within the private session, which takes over no variable of Qt.
environment=(
    QT_QPA_PLATFORM=offscreen
    # One function of a test may take longer than the five minutes that Qt Test allows it
    QTEST_FUNCTION_TIMEOUT=3600000
    # The regular expressions that Qt compiles to machine code read whole vectors, past the end of a text but not of
    # its memory. A suppression could not be limited to that code, because it belongs to no library.
    QT_ENABLE_REGEXP_JIT=0
)

log=build/dev/valgrind
rm -rf "$log"
mkdir -p "$log"
failed=()
for test in "${tests[@]}"; do
    arguments=()
    if [[ $test == replay_* ]]; then
        arguments=("tests/fuzz/corpus/${test#replay_}")
    fi
    start=$SECONDS
    code=0
    scripts/private-session.sh env "${environment[@]}" valgrind "${options[@]}" \
        --log-file="$log/$test.findings" build/dev/tests/*/"$test" "${arguments[@]}" >"$log/$test.output" 2>&1 || code=$?
    echo "$test: $(sed -n 's/.*ERROR SUMMARY: //p' "$log/$test.findings" | tail -n 1), exit code $code," \
        "$((SECONDS - start)) s"
    [ $code -eq 0 ] || failed+=("$test")
done

for test in "${failed[@]}"; do
    echo
    echo "== $test"
    grep -A 4 '^FAIL!' "$log/$test.output" || true
    sed 's/^==[0-9]*== \?//' "$log/$test.findings"
done
echo
echo "valgrind: ${#tests[@]} tests, ${#failed[@]} of them with findings or failures; the reports are in $log"
[ ${#failed[@]} -eq 0 ]
