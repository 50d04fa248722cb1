#!/usr/bin/env bash
# Tests the check kit under Wine's cmd, as a user runs it: completely, with the stand-in instead of the
# real player, interrupted, and when it must refuse to start. Compares registry, files and log before
# and after. About four minutes; not part of ./dev test, because it runs the same programs.
#   check-kit-test.sh [--player-only] [ZIP]   the kit of dist/, or this one
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/demo/processes.sh
. scripts/prefix-snapshot.sh

whole=1
if [ "${1:-}" = --player-only ]; then
    whole=0
    shift
fi
zips=("${1:-}")
[ -n "${zips[0]}" ] || zips=(dist/OrVaneWmpPlugin-*-check.zip)
[ -f "${zips[0]}" ] || fail "there is no check kit in dist/" "./dev release makes it"
zip=$(realpath "${zips[0]}")
work=$build/check-kit-test
kit=$work/kit\ é
rm -rf "$work" && mkdir -p "$kit"
(cd "$kit" && unzip -q "$zip")
claim_wine
trap end_everything EXIT
trap 'exit 130' INT TERM

class=HKLM\\Software\\Classes\\CLSID\\$(name_of kClassId)
log_file=$WINEPREFIX/drive_c/ProgramData/OrVaneMedia/OrVane.log
log() { md5sum "$log_file" 2>/dev/null || echo none; }
# check_cmd [ARGUMENT...]: its exit code; what it prints is in screen.txt.
check_cmd() {
    local code=0
    (cd "$kit" && timeout 500 wine cmd /c check.cmd /quiet "$@" </dev/null >"$work/screen.txt" 2>&1) || code=$?
    echo $code
}
reports() { # WHAT PATTERN...
    local pattern
    for pattern in "${@:2}"; do
        if grep -qE -- "$pattern" "$kit/report.txt"; then good; else bad "$1: report.txt has no line '$pattern'"; fi
    done
}
# Wine is stopped while a snapshot is taken, so the log does not change.
before() {
    snapshot before
    log >"$work/log.before"
}
is_as_before() {
    snapshot after
    expect_same "$1" before after
    expect_equal "$1: the log" "$(cat "$work/log.before")" "$(log)"
}

start_wine_session
rm -rf "$WINEPREFIX/drive_c/orvane-launcher-tests"
in_wine 'C:\windows\syswow64\regsvr32.exe' /u /s "$(windows_path "$kit/programs/OrVaneWmpPlugin.dll")" || true

say "a complete check, on a machine without OrVane"
in_wine reg delete 'HKLM\Software\OrVaneMedia' /f /reg:32 || true
rm -rf "${log_file%/*}"
if [ $whole = 1 ]; then
    before
    expect_equal "the whole check" 0 "$(check_cmd)"
    cat "$work/screen.txt"
    reports "the whole check" 'Windows: .*Wine' 'Format runtime .*: not there' 'This machine is as it was before' \
        ' 30 of 30 things were seen; .*all was well'
    if head -c 3 "$kit/report.txt" | cmp -s - <(printf '\xEF\xBB\xBF') && ! grep -qv $'\r$' "$kit/report.txt"; then good; else
        bad "the report is not UTF-8 with its mark and CR LF"
    fi
    cp "$kit/report.txt" "$work/"
    is_as_before "after the whole check"
fi

say "the stand-in instead of the real player, on a machine with OrVane and an older plug-in"
in_wine reg add "HKLM\\$(name_of kSettingsKey)" /v Path /t REG_EXPAND_SZ /d '%ProgramFiles%\OrVane é' /f /reg:32
in_wine reg add "$class\\InprocServer32" /d 'C:\old.dll' /f /reg:32
mkdir -p "${log_file%/*}"
echo "a line of yesterday" >"$log_file"
before
expect_equal "the player" 0 "$(check_cmd player programs/player.exe)"
reports "the player" 'event     PlayerHello' '9 of 9 things were seen; all was well' 'This machine is as it was before'
is_as_before "after the player"

say "an interrupted check"
check_cmd player programs/player.exe >/dev/null &
running=$!
deadline=$((SECONDS + 30))
until [ -n "$(find "$WINEPREFIX/drive_c/users" -path '*OrVane check*/player/transcript.txt' -size +300c)" ] || [ $SECONDS -gt $deadline ]; do sleep 0.2; done
in_wine taskkill /f /im check.exe || bad "check.exe does not run"
wait $running
if grep -q 'cut short' "$work/screen.txt"; then good; else bad "cut short: $(cat "$work/screen.txt")"; fi
expect_equal "cut short: programs left" "" "$(timeout 20 wine tasklist </dev/null 2>/dev/null | grep -iE 'player|OrVaneApp' || true)"
is_as_before "after a check that was cut short"

say "while the player runs, and with wrong arguments"
(cd "$kit/programs" && exec wine player.exe </dev/null >/dev/null 2>&1) &
sleep 3
expect_equal "while the player runs" 2 "$(check_cmd)"
reports "while the player runs" 'Media Player is running'
in_wine taskkill /f /im player.exe
expect_equal "a wrong word" 2 "$(check_cmd nonsense)"
expect_equal "no real player" 2 "$(check_cmd player)"

in_wine reg delete 'HKLM\Software\OrVaneMedia' /f /reg:32
in_wine reg delete "$class" /f /reg:32
echo "the check kit: $passed passed, $failed failed"
[ $failed = 0 ]
