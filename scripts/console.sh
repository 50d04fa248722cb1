#!/usr/bin/env bash
# Starts player and plug-in, and opens the application's prompt.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh
. scripts/demo/processes.sh

library=()
if [ $# -gt 0 ]; then
    [ -d "$1" ] || fail "there is no folder '$1'" "./dev console takes a folder with .wma files, or nothing for copies of the samples"
    library=("$(windows_path "$(readlink -f "$1")")")
    say "the tracks in $1 themselves are the library: what you write is written to them"
fi
build_preset win32 --target check OrVaneWmpPlugin OrVaneApp player wmvcore
claim_wine
trap end_everything EXIT
trap 'exit 130' INT TERM
start_wine_session

say "opening the application's prompt; the player is starting, its output is in build/console/player.txt"
wine build/win32/check.exe console "--work=$(windows_path "$build")" "${library[@]}"
