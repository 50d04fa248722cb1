#!/usr/bin/env bash
# soak.sh [MINUTES [SEED]]: the stress test of the real plug-in in a player's process. Prints a table;
# the exit code is 1 when a limit was exceeded.
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/build.sh

minutes=${1:-5}
[[ $minutes =~ ^[0-9]+(\.[0-9]+)?$ ]] || fail "'$minutes' is no number of minutes" "./dev soak 5"

build_preset win32 --target orvane_soak wmvcore
start_wine_session
trap end_wine_session EXIT

say "$minutes minutes on $(nproc) processors, with a load of $(cut -d' ' -f1 /proc/loadavg)"
status=0
# What sets up, warms up and may go on a little longer takes some minutes, whatever is asked for.
timeout "$(awk "BEGIN { print int($minutes * 90 + 600) }")" wine build/win32/orvane_soak.exe "$minutes" "${@:2}" || status=$?
case $status in
    0) ;;
    1) fail "a limit was broken" "read the lines above" ;;
    124) fail "the player hung" "run it again with the seed above, and look with winedbg" ;;
    *) fail "the player ended by itself ($status)" "run it again with the seed above" ;;
esac
