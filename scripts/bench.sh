#!/usr/bin/env bash
# Measures what the plug-in costs the player: tables of medians, under Wine except for the documents.
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/build.sh

measure() { timeout 180 wine build/win32/orvane_bench.exe "$@" || fail "the measurement ended early" "read the line above"; }

build_preset win32 --target orvane_bench
start_wine_session
loops=()
trap 'kill "${loops[@]}" 2>/dev/null || true; end_wine_session' EXIT

say "measuring on $(nproc) processors, with a load of $(cut -d' ' -f1 /proc/loadavg) (the quieter, the better)"
measure

say "documents beside JUCE's own, without Windows"
build_preset native-release --target orvane_bench_messages
build/native-release/orvane_bench_messages

# A processor that sleeps between two calls needs more time to wake up than the calls themselves.
say "the link again, with a loop of lowest priority on each processor"
for _ in $(seq "$(nproc)"); do
    nice -n 19 bash -c 'while :; do :; done' &
    loops+=($!)
done
measure link
