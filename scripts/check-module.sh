#!/usr/bin/env bash
# check-module.sh MODULE: what the plug-in's file shows and needs. Four undecorated exports; nothing
# that a Windows may lack, as WMVCORE.dll is before it is needed; no hand on the player's timer
# resolution.
set -euo pipefail
tables=$(i686-w64-mingw32-objdump -p "$1")
same() {
    [ "$2" = "$3" ] || {
        printf 'error: the %s of %s are\n%s\nand not\n%s\n' "$1" "$(basename "$4")" "$2" "$3" >&2
        exit 1
    }
}
exports=$(sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[ *[0-9]*\] //p' <<<"$tables")
same exports "$exports" 'DllCanUnloadNow
DllGetClassObject
DllRegisterServer
DllUnregisterServer' "$1"
imports=$(sed -n 's/^\tDLL Name: //p' <<<"$tables" | tr '[:upper:]' '[:lower:]' | LC_ALL=C sort)
same imports "$imports" 'advapi32.dll
kernel32.dll
msvcrt.dll
ole32.dll
oleaut32.dll
shell32.dll
user32.dll' "$1"
