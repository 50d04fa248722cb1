#!/usr/bin/env bash
# Every test: the Windows programs under Wine, and what needs no Windows under sanitizers.
# Arguments go to ctest (for example -R pipes).
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
for preset in win32 native; do
    say "testing build/$preset"
    # Some tests measure time, on a machine that may be busy: a failure is shown, and tried once more.
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=error --repeat until-pass:2 "$@" || result=1
done

# The programs' own reports are the count; a program that crashed left none and failed above.
count() { sed -n "s/^<testsuites .*$1=\"\([0-9]*\)\".*/\1/p" build/win32/*.report.xml build/native/*.report.xml 2>/dev/null | awk "{ n += \$1 } END { print n + 0 }"; }
tests=$(count tests) failures=$(count failures)
tests=${tests:-0} failures=${failures:-0}
[ "$tests" -gt 0 ] || result=1
[ $result = 0 ] || [ "$failures" -gt 0 ] || failures=1
echo "$((tests - failures)) passed, $failures failed"
exit $result
