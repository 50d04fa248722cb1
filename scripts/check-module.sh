#!/usr/bin/env bash
# check-module.sh MODULE: checks the plug-in's file. It has four undecorated exports, imports no DLL
# that a Windows may lack (such as WMVCORE.dll), does not change the timer resolution, has ASLR and NX,
# and does not exceed its size limit.
set -euo pipefail
. "$(dirname "$0")/common.sh"

largest=1500000 # bytes
tables=$(i686-w64-mingw32-objdump -p "$1")
same() {
    [ "$2" = "$3" ] || fail "the $1 of the module are
$(tr ' ' '\n' <<<"$2")
and not
$(tr ' ' '\n' <<<"$3")" "look at what was linked in"
}
names() { LC_ALL=C sort | paste -sd ' '; }
same exports "$(sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[.* //p' <<<"$tables" | names)" \
    'DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer'
same imports "$(sed -n 's/^\tDLL Name: //p' <<<"$tables" | tr '[:upper:]' '[:lower:]' | names)" \
    'advapi32.dll kernel32.dll msvcrt.dll ole32.dll oleaut32.dll shell32.dll user32.dll'
if grep -w timeBeginPeriod <<<"$tables" >&2; then fail "the module sets the timer resolution" "look at what calls it"; fi
for characteristic in DYNAMIC_BASE NX_COMPAT; do
    grep -qw $characteristic <<<"$tables" ||
        fail "the module is linked without $characteristic" "look at the link options in CMakeLists.txt"
done
size=$(stat -c %s "$1")
[ "$size" -le $largest ] || fail "the module has grown to $size bytes, and $largest is its limit" "look at what was linked in"
say "the module takes $size bytes, with ASLR and NX"
