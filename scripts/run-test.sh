#!/usr/bin/env bash
# run-test.sh PROGRAM [ARGUMENT...]: runs one test program, under Wine when it is a Windows one,
# and fails unless its report says that it ran at least one test.
set -euo pipefail
cd "$(dirname "$1")"
program=$(basename "$1")
report=${program%.exe}.report.xml
rm -f "$report"
run=("./$program")
[[ $program != *.exe ]] || run=(wine "$program")
status=0
"${run[@]}" --gtest_brief=1 "--gtest_output=xml:$report" "${@:2}" || status=$?
[ $status = 0 ] || { echo "error: $program ended with $status" >&2; exit "$status"; }
grep -q '<testcase .*status="run"' "$report" 2>/dev/null || {
    echo "error: $program ran no test (could Wine start it?)" >&2
    exit 3
}
