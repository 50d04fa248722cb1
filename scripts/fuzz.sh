#!/usr/bin/env bash
# Fuzzing: runs the fuzzers of everything that reads input from outside, under sanitizers.
#   fuzz.sh [SECONDS] [NAME...]     each fuzzer, or those named, for so long (60)
#   fuzz.sh --runs N [NAME...]      or for so many runs
# New inputs and those that fail stay under build/fuzz; the seeds in fuzz/corpus are never changed.
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/build.sh

at_a_time=2
amount=60 unit=s limit=-max_total_time
if [ "${1:-}" = --runs ]; then
    amount=${2:-} unit=runs limit=-runs
    shift $(($# < 2 ? $# : 2))
elif [[ ${1:-} =~ ^[0-9] ]]; then
    amount=$1
    shift
fi
[[ $amount =~ ^[1-9][0-9]*$ ]] || fail "'$amount' is no number of seconds or runs" "./dev fuzz 60, or ./dev fuzz --runs 1000000"
# libFuzzer checks the time between runs only.
time_limit=86400
[ $unit = runs ] || time_limit=$((amount + 60))
mapfile -t all < <(ls fuzz/corpus)
mapfile -t names < <(printf '%s\n' "${@:-${all[@]}}" | sort -u)
for name in "${names[@]}"; do
    [ -d "fuzz/corpus/$name" ] || fail "there is no fuzzer '$name'" "these are there: ${all[*]}"
done

build_preset native --target fuzzers
logs=build/fuzz/logs
rm -rf $logs
mkdir -p $logs build/fuzz/crashes

declare -A process_of=()
say "fuzzing, $amount $unit each, $at_a_time at a time"
trap 'jobs -p | xargs -r kill 2>/dev/null || true' EXIT
for name in "${names[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge $at_a_time ]; do sleep 0.2; done
    echo "    $name"
    mkdir -p "build/fuzz/found/$name"
    # Small runs need little memory held back, and stacks only when a failure is looked at.
    ASAN_OPTIONS=quarantine_size_mb=4:malloc_context_size=0:max_malloc_fill_size=0 \
        UBSAN_OPTIONS=print_stacktrace=1 timeout -k 10 "$time_limit" "build/native/fuzz_$name" \
        "$limit=$amount" -max_len=4096 -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/crashes/$name-" "build/fuzz/found/$name" "fuzz/corpus/$name" \
        >"$logs/$name.log" 2>&1 </dev/null &
    process_of[$name]=$!
done

stat_of() { sed -n "s/^stat::$1: *//p" "$logs/$name.log"; }
failed=()
for name in "${names[@]}"; do
    wait "${process_of[$name]}" || failed+=("$name")
done
printf '%-18s %12s %10s %10s %11s\n' fuzzer runs 'runs/s' coverage 'new inputs'
for name in "${names[@]}"; do
    printf '%-18s %12s %10s %10s %11s\n' "$name" "$(stat_of number_of_executed_units)" "$(stat_of average_exec_per_sec)" \
        "$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$logs/$name.log" | tail -n 1)" "$(stat_of new_units_added)"
done
[ ${#failed[@]} -gt 0 ] || exit 0
for name in "${failed[@]}"; do
    printf '\n%s has failed; its log is build/fuzz/logs/%s.log:\n' "$name" "$name"
    grep -m 3 -E '^does not hold|ERROR: |runtime error: ' "$logs/$name.log" || tail -n 5 "$logs/$name.log"
    input=$(sed -n 's/.*Test unit written to //p' "$logs/$name.log" | tail -n 1)
    [ -z "$input" ] || printf 'repeat it:    %s %s\nmake it less: %s -minimize_crash=1 -max_total_time=60 %s\n' \
        "build/native/fuzz_$name" "$input" "build/native/fuzz_$name" "$input"
done
fail "${#failed[@]} of ${#names[@]} fuzzers failed: ${failed[*]}" \
    "mend what the input shows, add a case to the room's tests, and run ./dev fuzz 60 ${failed[*]}"
