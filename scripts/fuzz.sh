#!/usr/bin/env bash
# Tries what reads input from outside with input that somebody invents, under sanitizers.
#   fuzz.sh [SECONDS] [NAME...]     each fuzzer, or those named, for so long (60)
#   fuzz.sh --runs N [NAME...]      or for so many runs
# New inputs and those that fail stay under build/fuzz; the seeds in fuzz/corpus are never changed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh

largest_input=4096
at_a_time=2

if [ "${1:-}" = --runs ]; then
    amount="${2:-} runs" limit=-runs=${2:-} time_limit=86400
    shift $(($# < 2 ? $# : 2))
else
    seconds=60
    if [[ ${1:-} =~ ^[0-9] ]]; then
        seconds=$1
        shift
    fi
    amount="$seconds s" limit=-max_total_time=$seconds
    # The fuzzer looks at the clock between runs only.
    time_limit=$((seconds + 60))
fi
[[ $amount =~ ^[1-9][0-9]*\  ]] || fail "'${amount% *}' is no number of seconds or runs" "./dev fuzz 60, or ./dev fuzz --runs 1000000"
mapfile -t all < <(find fuzz/corpus -mindepth 1 -maxdepth 1 -type d -printf '%f\n' | sort)
mapfile -t names < <(printf '%s\n' "${@:-${all[@]}}" | sort -u)
for name in "${names[@]}"; do
    [ -d "fuzz/corpus/$name" ] || fail "there is no fuzzer '$name'" "these are there: ${all[*]}"
done

build_preset native --target fuzzers
logs=$build/fuzz/logs
crashes=build/fuzz/crashes
rm -rf "$logs"
mkdir -p "$logs" "$crashes"

declare -A name_of=() code_of=()
running=0
start() {
    local name=$1
    mkdir -p "build/fuzz/found/$name"
    # Small runs need little memory held back, and stacks only when a failure is looked at.
    ASAN_OPTIONS=quarantine_size_mb=4:malloc_context_size=0:max_malloc_fill_size=0 \
        UBSAN_OPTIONS=print_stacktrace=1 timeout -k 10 "$time_limit" "build/native/fuzz_$name" \
        "$limit" -max_len=$largest_input -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$crashes/$name-" "build/fuzz/found/$name" "fuzz/corpus/$name" \
        >"$logs/$name.log" 2>&1 </dev/null &
    name_of[$!]=$name
    running=$((running + 1))
}
await_one() {
    local pid code=0
    wait -n -p pid || code=$?
    code_of[${name_of[$pid]}]=$code
    running=$((running - 1))
}

say "fuzzing, $amount each, $at_a_time at a time"
trap 'jobs -p | xargs -r kill 2>/dev/null || true' EXIT
for name in "${names[@]}"; do
    [ $running -lt $at_a_time ] || await_one
    echo "    $name"
    start "$name"
done
while [ $running -gt 0 ]; do await_one; done

stat_of() { sed -n "s/^stat::$2: *//p" "$logs/$1.log"; }
coverage_of() { sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$logs/$1.log" | tail -n 1; }
failed=()
printf '%-18s %12s %10s %10s %11s\n' fuzzer runs 'runs/s' coverage 'new inputs'
for name in "${names[@]}"; do
    printf '%-18s %12s %10s %10s %11s\n' "$name" "$(stat_of "$name" number_of_executed_units)" \
        "$(stat_of "$name" average_exec_per_sec)" "$(coverage_of "$name")" "$(stat_of "$name" new_units_added)"
    [ "${code_of[$name]}" = 0 ] || failed+=("$name")
done
[ ${#failed[@]} -gt 0 ] || exit 0

for name in "${failed[@]}"; do
    printf '\n%s has failed (exit code %s); its log is build/fuzz/logs/%s.log:\n' \
        "$name" "${code_of[$name]}" "$name"
    grep -m 3 -E '^does not hold|ERROR: |runtime error: ' "$logs/$name.log" || tail -n 5 "$logs/$name.log"
    input=$(sed -n 's/.*Test unit written to //p' "$logs/$name.log" | tail -n 1)
    [ -z "$input" ] || printf 'repeat it:    build/native/fuzz_%s %s\nmake it less: build/native/fuzz_%s -minimize_crash=1 -max_total_time=60 %s\n' \
        "$name" "$input" "$name" "$input"
done
fail "${#failed[@]} of ${#names[@]} fuzzers failed: ${failed[*]}" \
    "mend what the input shows, add a case to the room's tests, and run ./dev fuzz 60 ${failed[*]}"
