#!/usr/bin/env bash
# Packs the kit that checks the plug-in on a real Windows: tests, stand-ins, sample tracks, check.cmd.
# Called by release.sh in the tree of the commit, whose build/win32 is configured.
#   check-kit.sh --version=0.1.6 --output=FOLDER
# SOURCE_DATE_EPOCH dates what is packed: the same inputs give the same bytes.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/archive.sh

for argument in "$@"; do
    case $argument in
        --version=*) version=${argument#*=} ;;
        --output=*) output=$(realpath -m "${argument#*=}") ;;
        *) fail "check-kit.sh has no option '$argument'" "read its first lines" ;;
    esac
done
mkdir -p "$output"
kit=$(mktemp -d)
trap 'rm -rf "$kit"' EXIT

for test in $(ctest --test-dir build/win32 -N | sed -n 's/.*: \(.*_tests\)$/\1/p'); do
    grep -qE "^test $test( |\$)" check/kit.txt || fail "check/kit.txt does not name the test program $test" "add its line"
done
say "the check's programs and tests"
cmake --build build/win32 --target check_kit
mkdir -p "$kit/programs/stand-in" "$kit/tests/data" "$kit/scripts/demo" "$kit/check" "$kit/docs"
while read -r kind program _; do
    [ "$kind" = test ] || [ "$kind" = program ] || continue
    file=build/win32/$program.exe
    [ -f "$file" ] || file=build/win32/$program.dll
    i686-w64-mingw32-strip -o "$kit/programs/${file##*/}" "$file"
done <check/kit.txt
mv "$kit/programs/wmvcore.dll" "$kit/programs/stand-in/"
# The module as it ships, with its link to the debug information.
cp build/win32/OrVaneWmpPlugin.dll "$kit/programs/"
! scripts/sign.sh --wanted || scripts/sign.sh "$kit/programs/OrVaneWmpPlugin.dll" "$kit/programs/check.exe"
cp tests/data/*.wma tests/data/cover.* "$kit/tests/data/"
cp scripts/demo/*.txt "$kit/scripts/demo/"
cp docs/protocol.md docs/player-rules.md "$kit/docs/"
for text in check/kit.txt check/README.txt check/check.cmd LICENSE; do
    windows_text "$text" >"$kit/$text"
done
mv "$kit/check/README.txt" "$kit/check/check.cmd" "$kit/"
scripts/notices.sh --tests | sed 's/$/\r/' >"$kit/NOTICES"
zip_folder "$kit" "$output/OrVaneWmpPlugin-$version-check.zip"
