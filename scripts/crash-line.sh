#!/usr/bin/env bash
# Prints function, file and line of a crash address. docs/crash-addresses.md explains how to get the
# addresses.
#   crash-line.sh OFFSET...                       as Windows' event log gives them
#   crash-line.sh --base=ADDRESS ADDRESS...       as a dump gives them, with the module's base
# The symbols are OrVaneWmpPlugin.dll.debug beside this script, or the file named by --symbols=FILE.
set -euo pipefail
symbols=$(dirname "$(readlink -f "$0")")/OrVaneWmpPlugin.dll.debug
base=0
while [ $# -gt 0 ]; do
    case $1 in
        --base=*) base=$((${1#*=})) ;;
        --symbols=*) symbols=${1#*=} ;;
        *) break ;;
    esac
    shift
done
[ $# -gt 0 ] || { echo "usage: crash-line.sh [--base=0x...] [--symbols=FILE] 0x..." >&2; exit 2; }
[ -f "$symbols" ] || { echo "error: $symbols is not there; unpack the release's -symbols.zip" >&2; exit 1; }
tools=
! command -v i686-w64-mingw32-addr2line >/dev/null || tools=i686-w64-mingw32-
image_base=$((16#$("${tools}objdump" -p "$symbols" | sed -n 's/^ImageBase[[:space:]]*//p')))
for address in "$@"; do
    "${tools}addr2line" -e "$symbols" -f -C -i -p "$(printf '0x%x' $((address - base + image_base)))"
done
