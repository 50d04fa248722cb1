#!/usr/bin/env bash
# Prints the licences of everything that is linked into the module, from the source archives and the
# packages' copyright files, so that they match the linked versions. --tests adds the test programs'.
set -euo pipefail
. "$(dirname "$0")/common.sh"
sources=${ORVANE_DEPS:-$deps}

# section TITLE FILE [FIRST LAST]: the file, or from the line FIRST to before the next line LAST.
section() {
    printf '\n%s\n%s\n\n' "$1" "${1//?/=}"
    awk -v first="${3:-.}" -v last="${4:-}" \
        '!on && $0 ~ first { on = 1 } on && last && $0 ~ last { exit } on { print } END { exit !on }' "$2" ||
        fail "$2 no longer contains the text for NOTICES" "look at the file, and correct scripts/notices.sh"
}

cat <<'TEXT'
OrVaneWmpPlugin.dll is licensed under the GNU General Public License, version 3 or
later (LICENSE). Linked into it are the following, each under its own terms.
TEXT
section "JUCE: the module juce_core" "$sources/juce/modules/juce_core/juce_core.h" 'Copyright .c.' '===='
section "pugixml" "$sources/pugixml/LICENSE.md"
section "The mingw-w64 runtime and winpthreads, of mingw-w64" /usr/share/doc/mingw-w64-i686-dev/copyright
section "libgcc and libstdc++, under the GNU General Public License, version 3 or later, with this exception" \
    /usr/share/doc/gcc-mingw-w64-base/copyright '^GCC RUNTIME LIBRARY EXCEPTION' '^libquadmath/'
[ "${1:-}" = --tests ] || exit 0
section "zlib, in the stand-in application only" "$sources/zlib/LICENSE"
section "GoogleTest, in the test programs only" /usr/share/doc/googletest/copyright
