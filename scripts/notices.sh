#!/usr/bin/env bash
# Prints the terms of everything that is linked into the module, out of the packages' own copyright
# files, so that the text is the one of what was linked. With --tests: into the test programs, too.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
documents=/usr/share/doc
pugixml=${ORVANE_DEPS:-$deps}/pugixml

title() { printf '\n%s\n%s\n\n' "$1" "$(printf '%.0s=' $(seq ${#1}))"; }
not_there() { fail "$1 no longer has what NOTICES takes from it" "look at the file, and mend scripts/notices.sh"; }

# stanzas PACKAGE PATTERN: of a machine-readable copyright file, what covers files like these, and the
# licences that those paragraphs name and the file gives further down.
stanzas() {
    awk -v pattern="$2" '
        BEGIN { RS = ""; ORS = "\n\n" }
        /^License:/ && ($2 in named) && !($2 in told) { told[$2] = 1; print; next }
        /^Files:/ {
            files = $0
            sub(/\n(Copyright|License):.*/, "", files)
            if (files !~ pattern) next
            print
            found = 1
            licence = $0
            sub(/.*\nLicense: */, "", licence)
            split(licence, lines, "\n")
            count = split(lines[1], names, " (and|or) ")
            for (i = 1; i <= count; i++) named[names[i]] = 1
        }
        END { exit !found }' "$documents/$1/copyright" || not_there "$documents/$1/copyright"
}
# lines PACKAGE FIRST LAST: from the line FIRST to before the line LAST.
lines() {
    awk -v first="$2" -v last="$3" '$0 ~ first { on = 1 } $0 ~ last { on = 0 } on { print; found = 1 } END { exit !found }' \
        "$documents/$1/copyright" || not_there "$documents/$1/copyright"
}

cat <<'TEXT'
OrVaneWmpPlugin.dll is licensed under the GNU General Public License, version 3 or
later (LICENSE). Linked into it are the following, each under its own terms.
TEXT
title "JUCE: the module juce_core"
stanzas juce-modules-source 'modules/juce_core/\*'
title "pugixml"
grep -q 'Permission is hereby granted' "$pugixml/LICENSE.md" || not_there "$pugixml/LICENSE.md"
cat "$pugixml/LICENSE.md"
title "The mingw-w64 runtime"
stanzas mingw-w64-i686-dev 'Files: \*|mingw-w64-crt/(crt/|gdtoa/|math/|misc/|stdio/)'
title "winpthreads, of mingw-w64"
stanzas mingw-w64-i686-dev 'mingw-w64-libraries/winpthreads/(\*|include|src)'
title "libgcc and libstdc++, of the GNU Compiler Collection"
echo 'They are under the GNU General Public License, version 3 or later (LICENSE), with this exception:'
echo
lines gcc-mingw-w64-base '^GCC RUNTIME LIBRARY EXCEPTION' '^libquadmath/'
[ "${1:-}" = --tests ] || exit 0
title "zlib, in the stand-in application only"
stanzas libz-mingw-w64-dev 'Files: \*'
title "GoogleTest, in the test programs only"
stanzas googletest 'Files: \*'
