#!/usr/bin/env bash
# Runs each fuzz target built in build-fuzz over its seeds in fuzz/corpus, for a bounded time, and prints
# one line per target. Inputs that add coverage go to build-fuzz/corpus, never into the repository;
# a finding is left in build-fuzz/findings/<target> (add it to fuzz/corpus/<target> once its cause is fixed).
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]; with RUNS=N each target runs N inputs instead.
# Exits 1 when any target found something or could not run.
set -uo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift $(($# > 0 ? 1 : 0))
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(document keycombo droptarget folderlisting desktopentry symbolstore)
if [ -n "${RUNS:-}" ]; then limit=(-runs="$RUNS"); else limit=(-max_total_time="$seconds"); fi

status=0
printf '%-14s %12s %9s %9s %9s\n' target executions execs/s coverage findings
for target in "${targets[@]}"; do
    program=$root/build-fuzz/fuzz/fuzz_$target
    work=$root/build-fuzz/corpus/$target
    findings=$root/build-fuzz/findings/$target
    log=$root/build-fuzz/fuzz-$target.log
    rm -rf "$findings"
    mkdir -p "$work" "$findings"
    "$program" "${limit[@]}" -print_final_stats=1 -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$findings/" "$work" "$root/fuzz/corpus/$target" >"$log" 2>&1
    code=$?
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | cut -d' ' -f2)
    found=$(find "$findings" -type f | wc -l)
    printf '%-14s %12s %9s %9s %9s\n' "$target" "${executions:-?}" "${rate:-?}" "${coverage:-?}" "$found"
    if [ "$code" -ne 0 ] || [ "$found" -ne 0 ]; then
        status=1
        echo "  fuzz_$target stopped with status $code; its log: $log" >&2
        grep -m 5 -E 'ERROR|SUMMARY|^[a-z].*:$' "$log" | sed 's/^/  | /' >&2
    fi
done
exit $status
