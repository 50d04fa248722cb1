#!/usr/bin/env bash
# Includes may only follow the arrows in docs/architecture.md: a room may include what its row names,
# and itself; nothing else. Every folder with sources has to have a row and a CMakeLists.txt of its own.
set -euo pipefail
. "$(dirname "$0")/common.sh"

rows=$(sed -n 's/^\([a-z_/]*\) *──►\(.*\)$/\1\2/p' docs/architecture.md)
[ -n "$rows" ] || fail "docs/architecture.md draws no arrows" "give each room a row: room ──► rooms that it may include"

# Tests and measurements may include everything.
git grep -n '^ *# *include "' -- '*.cpp' '*.h' ':!tests/' ':!bench/' | awk -F: -v rows="$rows" '
    BEGIN {
        count = split(rows, lines, "\n")
        for (i = 1; i <= count; i++) {
            n = split(lines[i], words, " ")
            for (j = 1; j <= n; j++) allowed[words[1], words[j]] = 1
        }
    }
    {
        split($3, quoted, "\""); header = quoted[2]
        from = $1; sub("/[^/]*$", "", from)
        to = header; sub("/[^/]*$", "", to)
        problem = ""
        if (!((from, from) in allowed)) problem = "the room " from " has no row of arrows"
        else if (to == header) problem = "\"" header "\" is not named from the top folder"
        else if (!((from, to) in allowed)) problem = from " may not include " header
        if (problem) { print $1 ":" $2 ": " problem; bad = 1 }
    }
    END { exit bad }' || fail "an include goes against the arrows" "see \"Folders and their dependencies\" in docs/architecture.md"

for room in $(git ls-files '*.cpp' ':!tests/' | xargs -n 1 dirname | sort -u); do
    [ -f "$room/CMakeLists.txt" ] || fail "$room has sources and no CMakeLists.txt" "each folder with sources is a library: add one"
done
