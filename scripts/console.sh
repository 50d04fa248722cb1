#!/usr/bin/env bash
# The player, the plug-in and you at the application's prompt.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh
. scripts/demo/processes.sh
export LC_ALL=C.UTF-8

build_preset win32 --target OrVaneWmpPlugin OrVaneApp player wmvcore

console=$build/console
music=${1:-$console/music}
if [ $# -gt 0 ]; then
    [ -d "$music" ] || fail "there is no folder '$music'" "./dev console takes a folder with .wma files, or nothing for copies of the samples"
    music=$(readlink -f "$music")
    say "the tracks in $music themselves are the library: what you write is written to them"
else
    mkdir -p "$music"
    cp -n tests/data/*.wma "$music/"
fi
mkdir -p "$console"

claim_wine
trap end_everything EXIT
trap 'exit 130' INT TERM
start_wine_session
register_plugin

# The application comes first and holds its pipes; the plug-in then finds it running.
transcript=$console/transcript.txt
: >"$transcript"
start_player_later() {
    local tries=0
    until grep -q '  ready: ' "$transcript"; do
        tries=$((tries + 1))
        [ $tries -lt 100 ] || return
        sleep 0.1
    done
    exec wine "$build/win32/player.exe" "--library=$(windows_path "$music")" </dev/null >"$console/player.txt" 2>&1
}
start_player_later &
player_process=$!

say "the application's prompt; the player comes in a moment, its output is in ${console#"$top"/}/player.txt"
wine "$build/win32/OrVaneApp.exe" "--transcript=$(windows_path "$transcript")" || true
say "ending the player"
