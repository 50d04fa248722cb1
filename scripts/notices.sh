#!/usr/bin/env bash
# Prints the terms of everything that is linked into the module, out of the sources' own files and
# the packages' copyright files, so that the text is the one of what was linked. With --tests: into the
# test programs, too.
set -euo pipefail
. "$(dirname "$0")/common.sh"
sources=${ORVANE_DEPS:-$deps}
documents=/usr/share/doc

title() { printf '\n%s\n%s\n\n' "$1" "$(printf '%.0s=' $(seq ${#1}))"; }
not_there() { fail "$1 no longer has what NOTICES takes from it" "look at the file, and mend scripts/notices.sh"; }

# part FILE FIRST LAST: from the first line that has FIRST to before the next one that has LAST.
part() {
    awk -v first="$2" -v last="$3" '!on && $0 ~ first { on = found = 1 } on && $0 ~ last { exit } on { print } END { exit !found }' \
        "$1" || not_there "$1"
}
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
cat <<'TEXT'
OrVaneWmpPlugin.dll is licensed under the GNU General Public License, version 3 or
later (LICENSE). Linked into it are the following, each under its own terms.
TEXT
title "JUCE: the modules juce_core and juce_events"
part "$sources/juce/modules/juce_core/juce_core.h" 'Copyright .c.' '====='
title "pugixml"
part "$sources/pugixml/LICENSE.md" 'MIT License' 'nothing follows'
title "zlib"
part "$sources/zlib/LICENSE" 'Copyright notice:' 'nothing follows'
title "The mingw-w64 runtime"
stanzas mingw-w64-i686-dev 'Files: \*|mingw-w64-crt/(crt/|gdtoa/|math/|misc/|stdio/)'
title "winpthreads, of mingw-w64"
stanzas mingw-w64-i686-dev 'mingw-w64-libraries/winpthreads/(\*|include|src)'
title "libgcc and libstdc++, of the GNU Compiler Collection"
echo 'They are under the GNU General Public License, version 3 or later (LICENSE), with this exception:'
echo
part "$documents/gcc-mingw-w64-base/copyright" '^GCC RUNTIME LIBRARY EXCEPTION' '^libquadmath/'
[ "${1:-}" = --tests ] || exit 0
title "GoogleTest, in the test programs only"
stanzas googletest 'Files: \*'
