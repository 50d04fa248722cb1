#!/usr/bin/env bash
# Every test: the Windows programs under Wine, what needs no Windows under sanitizers, the fuzzers,
# the demo and the installer. Arguments go to ctest (for example -R pipes); then only ctest runs.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh

build_preset win32
build_preset native
find build/win32 build/native -maxdepth 1 -name '*.report.xml' -delete

start_wine_session
trap 'kill "$wine_session" 2>/dev/null || true; stop_wine' EXIT

result=0
retried=()
# Only what measures time between processes may fail once, on a machine that is busy with other
# things; such tests bear the label, and those that needed their second try are named at the end.
run_tests() {
    local preset=$1 label=between-processes
    shift
    say "testing build/$preset"
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=ignore -LE $label "$@" || result=1
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=ignore -L $label "$@" && return
    mapfile -t -O ${#retried[@]} retried < <(sed 's/^[0-9]*://' "build/$preset/Testing/Temporary/LastTestsFailed.log")
    say "trying once more"
    ctest --test-dir "build/$preset" --output-on-failure -L $label --rerun-failed || result=1
}
run_tests win32 "$@"
run_tests native "$@"

# They compute, the demo and the installer mostly wait: side by side, and told of at the end. One that
# fails counts as a failed test.
fuzzers() {
    wait "$fuzzing" || result=1
    say "the fuzzers, meanwhile"
    cat "$build/logs/fuzz.log"
}
if [ $# = 0 ]; then
    nice scripts/fuzz.sh 10 >"$build/logs/fuzz.log" 2>&1 &
    fuzzing=$!
fi

if [ $# = 0 ]; then
    kill "$wine_session" 2>/dev/null || true
    say "the demo"
    scripts/demo.sh >"$build/logs/demo.log" 2>&1 || {
        tail -n 60 "$build/logs/demo.log"
        echo "error: the demo has failed; all it printed is in build/logs/demo.log"
        result=1
    }
    grep '==> all [0-9]* things were seen' "$build/logs/demo.log" || true
fi

# It has the prefix to itself.
test_installer() {
    say "the installer"
    scripts/installer-test.sh >"$build/logs/installer-test.log" 2>&1 || {
        tail -n 40 "$build/logs/installer-test.log"
        echo "error: the installer's test has failed; all it printed is in build/logs/installer-test.log"
        result=1
    }
    grep '^the installer: ' "$build/logs/installer-test.log" || true
}
if [ $# = 0 ]; then
    test_installer
    fuzzers
fi

# The programs' own reports are the count; a program that crashed left none and failed above.
count() { sed -n "s/^<testsuites .*$1=\"\([0-9]*\)\".*/\1/p" build/win32/*.report.xml build/native/*.report.xml 2>/dev/null | awk "{ n += \$1 } END { print n + 0 }"; }
tests=$(count tests) failures=$(count failures)
[ "$tests" -gt 0 ] || result=1
[ $result = 0 ] || [ "$failures" -gt 0 ] || failures=1
[ ${#retried[@]} = 0 ] || echo "needed a second try: ${retried[*]}"
echo "$((tests - failures)) passed, $failures failed"
exit $result
