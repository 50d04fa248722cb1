# shellcheck shell=bash disable=SC2154
# Sourced by tests that compare a whole Wine prefix before and after. Needs `work`, a folder.
failed=0
passed=0
good() { passed=$((passed + 1)); }
bad() {
    failed=$((failed + 1))
    echo "error: $*" >&2
}
expect_equal() { if [ "$2" = "$3" ]; then good; else bad "$1: expected '$2', got '$3'"; fi; }
# expect_that WHAT COMMAND...: the command succeeds.
expect_that() { if "${@:2}"; then good; else bad "$1"; fi; }

in_wine() { timeout 60 wine "$@" </dev/null >/dev/null 2>&1; }

# snapshot NAME: the whole registry and the prefix's files. Wine writes the registry when it ends;
# the copy of the uninstaller, which goes at the restart, is NSIS's own.
snapshot() {
    kill "$wine_session" 2>/dev/null || true
    wineserver -k || true
    wineserver -w
    # What Wine writes of its own accord is left out: its display's date, fonts, the console's colours.
    sed -e ':join' -e '/\\$/{N;s/\\\n *//;bjoin}' "$WINEPREFIX/system.reg" "$WINEPREFIX/user.reg" |
        sed -e '/^#time=/d' -e '/^WINE REGISTRY/d' -e 's/^\(\[.*\]\) [0-9]*$/\1/' -e '/^"PendingFileRenameOperations"/d' \
            -e '/^"DriverDateData"/d' -e '/^"Codepages"/d' -e '/\.FON"=/d' -e '/^\[Console\]/,/^$/d' >"$work/$1.registry"
    (cd "$WINEPREFIX/drive_c" && find . -type f ! -path '*/~nsu*' ! -path './ProgramData/OrVaneMedia/*' -print0 |
        sort -z | xargs -0 md5sum) >"$work/$1.files"
    (cd "$WINEPREFIX/drive_c" && find . -type d ! -path '*/~nsu*' ! -path './ProgramData/OrVaneMedia' | sort) >>"$work/$1.files"
    start_wine_session
}
expect_same() {
    local kind difference
    for kind in registry files; do
        if difference=$(diff "$work/$2.$kind" "$work/$3.$kind"); then good; else
            bad "$1: the $kind are not what they were:"
            head -n 20 <<<"$difference" >&2
        fi
    done
}
