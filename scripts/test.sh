#!/usr/bin/env bash
# Every test: the Windows programs under Wine, what needs no Windows under sanitizers, the fuzzers,
# the demo and the installer. Arguments go to ctest (for example -R pipes); then only ctest runs.
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/build.sh

build_preset win32
build_preset native
find build/win32 build/native -maxdepth 1 -name '*.report.xml' -delete
start_wine_session
trap end_wine_session EXIT

result=0
retried=()
# Only what measures time between processes may fail once, on a machine that is busy with other
# things; such tests bear the label, and those that needed their second try are named at the end.
run_tests() {
    local preset=$1 label=between-processes
    local test=(ctest --test-dir "build/$preset" --output-on-failure --no-tests=ignore)
    say "testing build/$preset"
    "${test[@]}" -LE $label "${@:2}" || result=1
    "${test[@]}" -L $label "${@:2}" && return
    mapfile -t -O ${#retried[@]} retried < <(sed 's/^[0-9]*://' "build/$preset/Testing/Temporary/LastTestsFailed.log")
    say "trying once more"
    "${test[@]}" -L $label --rerun-failed || result=1
}
run_tests win32 "$@"
run_tests native "$@"

# part NAME SUMMARY: a script that is a test of its own; of what it prints, the line that sums it up.
part() {
    say "the $1"
    if "scripts/$1.sh" >"build/logs/$1.log" 2>&1; then grep "$2" "build/logs/$1.log" || true; else
        tail -n 60 "build/logs/$1.log"
        echo "error: the $1 has failed; all it printed is in build/logs/$1.log"
        result=1
    fi
}
if [ $# = 0 ]; then
    # The fuzzers compute, the demo and the installer mostly wait: side by side.
    nice scripts/fuzz.sh 10 >build/logs/fuzz.log 2>&1 &
    fuzzing=$!
    kill "$wine_session" 2>/dev/null || true # each of them has the prefix to itself
    part demo '==> all [0-9]* things were seen'
    part installer-test '^the installer: '
    wait "$fuzzing" || result=1
    say "the fuzzers, meanwhile"
    cat build/logs/fuzz.log
fi

# The programs' own reports are the count; a program that crashed left none and failed above.
count() { { sed -n "s/^<testsuites .*$1=\"\([0-9]*\)\".*/\1/p" build/*/*.report.xml 2>/dev/null || true; } | awk '{ n += $1 } END { print n + 0 }'; }
tests=$(count tests) failures=$(count failures)
[ "$tests" -gt 0 ] || result=1
[ $result = 0 ] || [ "$failures" -gt 0 ] || failures=1
[ ${#retried[@]} = 0 ] || echo "needed a second try: ${retried[*]}"
echo "$((tests - failures)) passed, $failures failed"
exit $result
