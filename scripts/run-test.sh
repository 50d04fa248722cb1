#!/usr/bin/env bash
# run-test.sh PROGRAM [ARGUMENT...]: runs one test program, under Wine when it is a Windows one,
# and fails unless its report says that it ran at least one test.
set -euo pipefail
program=$(realpath "$1")
shift
report=${program%.exe}.report.xml
rm -f "$report"
status=0
if [[ $program == *.exe ]]; then
    cd "$(dirname "$program")"
    wine "$(basename "$program")" --gtest_brief=1 "--gtest_output=xml:$(basename "$report")" "$@" || status=$?
else
    "$program" --gtest_brief=1 "--gtest_output=xml:$report" "$@" || status=$?
fi
[ $status = 0 ] || { echo "error: $(basename "$program") ended with $status" >&2; exit "$status"; }
grep -q '<testcase .*status="run"' "$report" 2>/dev/null || {
    echo "error: $(basename "$program") ran no test (could Wine start it?)" >&2
    exit 3
}
