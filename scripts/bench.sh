#!/usr/bin/env bash
# What the plug-in costs the player: tables of medians, measured under Wine but for the documents.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh

build_preset win32 --target orvane_bench
start_wine_session
trap 'kill "$wine_session" 2>/dev/null || true; stop_wine' EXIT

read -r load _ </proc/loadavg
say "measuring on $(nproc) processors, with a load of $load (the quieter, the better)"
timeout 180 wine build/win32/orvane_bench.exe || fail "the measurement ended early" "read the line above"

say "documents beside JUCE's own, without Windows"
build_preset native-release --target orvane_bench_messages
build/native-release/orvane_bench_messages

# A processor that sleeps between two calls takes longer to wake than the calls take.
say "the link again, with a loop of lowest priority on each processor"
loops=()
for _ in $(seq "$(nproc)"); do
    nice -n 19 bash -c 'while :; do :; done' &
    loops+=($!)
done
trap 'kill "${loops[@]}" "$wine_session" 2>/dev/null || true; stop_wine' EXIT
timeout 120 wine build/win32/orvane_bench.exe link || fail "the measurement ended early" "read the line above"
