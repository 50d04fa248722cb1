#!/usr/bin/env bash
# Tests the kit for application developers under Wine's cmd, as they use it: builds the example with the
# command in its first lines, checks the vectors, and runs the example and the console with the stand-in player.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
wine_environment
work=$build/devkit-test
kit=$work/kit\ é
rm -rf "$work" && mkdir -p "$kit"
scripts/devkit.sh --version=0.0.0 --stage="$kit" >"$work/devkit.log" 2>&1 || {
    cat "$work/devkit.log"
    exit 1
}
cd "$kit"
failed=0
# wants WHAT FILE PATTERN...: the file contains each of these fixed texts.
wants() {
    local pattern
    for pattern in "${@:3}"; do
        if ! grep -qF -- "$pattern" "$2"; then
            printf '%s: no line has: %s\n' "$1" "$pattern"
            failed=1
        fi
    done
}
wants_code() {
    if [ "$2" != "$3" ]; then
        printf '%s: exit code %s, and not %s\n' "$1" "$3" "$2"
        failed=1
    fi
}
# code OUTPUT COMMAND...: its exit code
code() {
    local status=0
    "${@:2}" >"$1" 2>&1 || status=$?
    echo "$status"
}

# The page loads nothing from the network.
wants page protocol.html '<svg ' '<td>4</td>' 'href="#s1"'
if grep -nE '(src|href)="[^#]' protocol.html; then failed=1; fi

options=$(sed -n 's|^// *MinGW: *g++ \(.*\)\r$|\1|p' example/application.cpp)
[ -n "$options" ] || { echo "the example's head has no line for MinGW"; exit 1; }
for machine in i686 x86_64; do
    command -v $machine-w64-mingw32-g++-posix >/dev/null || { echo "(no compiler for $machine)"; continue; }
    # shellcheck disable=SC2086 # a command line
    (cd example && $machine-w64-mingw32-g++-posix -Wall -Wextra -Werror $options)
    wants_code vectors 0 "$(code "$work/vectors.txt" timeout 60 wine example/application.exe --vectors vectors)"
    wants vectors "$work/vectors.txt" 'not so 0'
    (exec timeout 100 wine cmd /c try.cmd mine </dev/null >"$work/player.txt" 2>&1) &
    player=$!
    for _ in $(seq 200); do
        ! grep -q 'waiting for the application' "$work/player.txt" || break
        sleep 0.1
    done
    printf '%s\n' 'setMediaInfoToIndex trackIndex=0 metadata.TrackTitle="Song 🎵"' 'getMediaInfoFromIndex trackIndex=0' \
        'fly' 'a word' 'start trackPath="x' 'setMediaInfoToIndex metadata.Year=1999' 'close' |
        timeout 100 wine example/application.exe >"$work/example.txt" || wants_code "the example" 1 $?
    wait $player || wants_code "the player" 0 $?
    wants "the example" "$work/example.txt" '"name":"PlayerHello","parameters":{"Player":"wmp"}' \
        '"metadataOut.TrackTitle":"Song \ud83c\udfb5"' '"name":"fly","parameters":{"return_value":"false"}' \
        "'word' is not KEY=VALUE" 'A quotation mark is not closed.' \
        '"name":"setMediaInfoToIndex","parameters":{"return_value":"false"}' '"name":"PlayerGoodbye"'
    wants "the player" "$work/player.txt" 'waiting for the application' 'tag Title = Song 🎵' '0 event sink(s) left'
done

printf '%s\n' 'expect event PlayerHello within 20000' 'getTrackCount' 'expect value trackCount=6' help 'frobnicate' 'close' \
    'expect event PlayerGoodbye' quit | timeout 100 wine cmd /c try.cmd >"$work/console.txt" 2>&1 || wants_code "the console" 1 $?
wants "the console" "$work/console.txt" 'event     PlayerHello' 'setMediaInfoToPath' 'event     PlayerGoodbye' frobnicate
wants_code "a wrong word" 2 "$(code "$work/word.txt" wine cmd /c try.cmd nonsense)"
wants "a wrong word" "$work/word.txt" 'try.cmd takes no word, or the word mine.'
[ $failed = 0 ] || { tail -n 30 "$work"/*.txt; exit 1; }
echo "the kit for application developers: all as it should be"
