#!/usr/bin/env bash
# Holds every include of our own to the arrows in docs/architecture.md: a room may include what its
# row names, and itself; nothing else. Every folder with sources has to have a row and a
# CMakeLists.txt of its own.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh

rows=$(sed -n 's/^\([a-z_/]*\) *──►\(.*\)$/\1\2/p' docs/architecture.md)
[ -n "$rows" ] || fail "docs/architecture.md draws no arrows" "give each room a row: room ──► rooms that it may include"

git ls-files '*.cpp' '*.h' | while IFS= read -r file; do
    sed -n 's/^ *# *include "\([^"]*\)".*/\1/p' "$file" | while IFS= read -r header; do
        printf '%s %s %s\n' "$file" "$(dirname "$file")" "$header"
    done
done | awk -v rows="$rows" '
    BEGIN {
        count = split(rows, lines, "\n")
        for (i = 1; i <= count; i++) {
            n = split(lines[i], words, " ")
            known[words[1]] = 1
            for (j = 2; j <= n; j++) allowed[words[1], words[j]] = 1
        }
    }
    function top(path) { sub("/.*", "", path); return path }
    {
        room = $2; from = room; to = $3
        sub("/[^/]*$", "", to)
        # Tests and measurements may look at everything.
        if (top(room) == "tests" || top(room) == "bench") next
        if (to == $3) { print $1 ": \"" $3 "\" is not named from the top folder"; bad = 1; next }
        if (!(room in known)) { print $1 ": the room " room " has no row of arrows"; bad = 1; next }
        if (to != from && !((from, to) in allowed)) { print $1 ": " from " may not include " $3; bad = 1 }
    }
    END { exit bad }' || fail "an include goes against the arrows" "see \"Folders\" in docs/architecture.md"

status=0
while IFS= read -r room; do
    if [ ! -f "$room/CMakeLists.txt" ]; then
        echo "$room has sources and no CMakeLists.txt"
        status=1
    fi
done < <(git ls-files '*.cpp' | grep -v '^tests/' | xargs -n 1 dirname | sort -u)
[ $status = 0 ] || fail "a room is a library of its own" "give it a CMakeLists.txt"
