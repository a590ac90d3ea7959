#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs what is missing, builds the fuzz targets with Clang and runs them, all at the same time.
#
#   fuzz.sh MINUTES [TARGET...]     TARGET: reader, journal or tables; all of them if none is given
#
# A target stops at its first finding; it keeps the input in build/fuzz/runs/TARGET/findings. The inputs that reached
# something new are kept as well, in build/fuzz/runs/TARGET/corpus, and the next run begins with them. Ends with 1
# when there is a finding.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! [[ ${1:-} =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: fuzz.sh MINUTES [TARGET...]" >&2
    exit 2
fi
seconds=$((60 * $1))
shift
targets=("$@")
if [ $# -eq 0 ]; then
    targets=(reader journal tables)
fi

scripts/setup.sh fuzz
cmake --preset fuzz
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}"

# A target that is stopped by a finding leaves its files behind. In memory they are faster.
memory=/dev/shm
[ -w "$memory" ] || memory=${TMPDIR:-/tmp}
TMPDIR=$(mktemp -d "$memory/ostrine-fuzz.XXXXXX")
export TMPDIR
# An input frees far less than this, so that no use of freed memory goes unnoticed.
export ASAN_OPTIONS=quarantine_size_mb=16
processes=()
clean_up() {
    [ ${#processes[@]} -eq 0 ] || kill "${processes[@]}" 2>/dev/null || true
    rm -rf "$TMPDIR"
}
trap clean_up EXIT

echo "Fuzzing until $(date -d "+$seconds seconds" +%H:%M): ${targets[*]}"
for target in "${targets[@]}"; do
    run=build/fuzz/runs/$target
    mkdir -p "$run/corpus" "$run/findings"
    nice build/fuzz/tests/fuzz/"fuzz_$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
        -dict="tests/fuzz/$target.dict" -artifact_prefix="$run/findings/" -print_final_stats=1 \
        "$run/corpus" "tests/fuzz/corpus/$target" >"$run/log" 2>&1 &
    processes+=($!)
done

# The last number that follows a text in a target's log
last_number() {
    grep -oP "$1 *\K[0-9]+" "build/fuzz/runs/$2/log" | tail -n 1 || echo 0
}

status=0
printf '%-8s %12s %8s %16s   %s\n' target executions exec/s "edges covered" finding
for i in "${!targets[@]}"; do
    target=${targets[i]}
    finding=none
    if ! wait "${processes[i]}"; then
        status=1
        finding=$(grep -oP 'Test unit written to \K.*' "build/fuzz/runs/$target/log" | tail -n 1 ||
            echo "see build/fuzz/runs/$target/log")
    fi
    printf '%-8s %12d %8d %16s   %s\n' "$target" "$(last_number 'stat::number_of_executed_units:' "$target")" \
        "$(last_number 'stat::average_exec_per_sec:' "$target")" \
        "$(last_number 'cov:' "$target") of $(last_number 'Loaded 1 modules *\(' "$target")" "$finding"
done
processes=()
exit "$status"
