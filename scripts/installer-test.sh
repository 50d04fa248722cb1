#!/usr/bin/env bash
# Tests the installer under Wine: first installation, upgrade, refusal, failure, moved folder and
# uninstallation. Compares the whole registry and all files of the prefix before and after. Packs
# build/win32 with several version numbers. Nothing else may use the prefix meanwhile.
#   installer-test.sh [--no-demo]
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/build.sh
. scripts/demo/processes.sh
. scripts/prefix-snapshot.sh
export LC_ALL=C.UTF-8

build_preset win32 --target OrVaneWmpPlugin OrVaneApp player wmvcore
install_packages nsis zip

work=$build/installer-test
music=$work/music
module=$build/win32/OrVaneWmpPlugin.dll
rm -rf "$work" && mkdir -p "$work/broken" "$music"
claim_wine

home=$WINEPREFIX/drive_c/OrVane\ é\ dir # OrVane's folder
home_windows='C:\OrVane é dir'
default_home=$WINEPREFIX/drive_c/Program\ Files\ \(x86\)/OrVane
class=$(name_of kClassId)
class_key="HKCR\\Wow6432Node\\CLSID\\$class\\InprocServer32"
entry_key='HKLM\Software\Wow6432Node\Microsoft\Windows\CurrentVersion\Uninstall\OrVaneWmpPlugin'
settings_key=HKLM\\$(name_of kSettingsKey)

trap 'rm -rf "$home" "$default_home"; end_everything' EXIT
trap 'exit 130' INT TERM

# registry KEY [VALUE]: its text, or of its default value; empty when there is none. reg query would
# print in a code page of Wine's choice.
registry() {
    local name=${2:+\"$2\"}
    rm -f "$work/key.reg"
    in_wine reg export "$1" "$(windows_path "$work/key.reg")" /y || return 0
    iconv -f UTF-16 -t UTF-8 "$work/key.reg" | tr -d '\r' | sed -n "s/^${name:-@}=\"\(.*\)\"\$/\1/p" | sed 's/\\\(.\)/\1/g'
}
# setup VERSION [OPTION...]: its exit code, as far as one byte shows it: 3010 comes as 194.
setup() {
    local code=0
    in_wine "$work/OrVaneWmpPlugin-$1-setup.exe" /S "${@:2}" || code=$?
    echo $code
}
is_no_entry() { [ -z "$(registry "$entry_key" DisplayName)" ]; }
# The uninstaller continues in a copy of itself and removes its registry entry last.
uninstall() {
    in_wine "$1/OrVaneWmpPlugin-uninstall.exe" /S || true
    within 30 is_no_entry || true
}
is_installed() { # WHAT VERSION FOLDER FOLDER_WINDOWS
    expect_equal "$1: the entry's version" "$2" "$(registry "$entry_key" DisplayVersion)"
    expect_equal "$1: the registered module" "$4\\OrVaneWmpPlugin.dll" "$(registry "$class_key")"
    expect_that "$1: another module is in place" cmp -s "$3/OrVaneWmpPlugin.dll" "$module"
}

say "packing installers of several versions"
pack() { quietly "installer-test-$1" scripts/package.sh --installer-only --module="$2" --version="$1" --output="$work"; }
echo "no module at all" >"$work/broken/OrVaneWmpPlugin.dll"
pack 0.1.6 "$module"
pack 0.1.7 "$module"
pack 0.1.8 "$work/broken/OrVaneWmpPlugin.dll"
for kind in damaged vista; do cp "$work/OrVaneWmpPlugin-0.1.6-setup.exe" "$work/OrVaneWmpPlugin-$kind-setup.exe"; done
printf 'spoiled' | dd of="$work/OrVaneWmpPlugin-damaged-setup.exe" bs=1 seek=300000 conv=notrunc status=none

say "on a machine with OrVane and without the plug-in"
start_wine_session
in_wine 'C:\windows\syswow64\regsvr32.exe' /u /s "$(windows_path "$module")" || true
mkdir -p "$home"
cp "$build/win32/OrVaneApp.exe" "$home/"
echo "the user's own" >"$home/notes.txt"
in_wine reg add 'HKLM\Software\Microsoft\MediaPlayer\UIPlugins' /f /reg:32 # every player has it
in_wine reg add "$settings_key" /v Path /t REG_SZ /d "$home_windows\\" /f /reg:32
in_wine reg add 'HKCU\Software\Wine\AppDefaults\OrVaneWmpPlugin-vista-setup.exe' /v Version /d vista /f
snapshot clean
# The last one holds a module that cannot be registered.
for kind in damaged vista 0.1.8; do expect_equal "the installer '$kind'" 2 "$(setup $kind)"; done
snapshot refused
expect_same "after what was refused and what failed" clean refused

say "installing, and the demo's short form with what was installed"
expect_equal "installing" 0 "$(setup 0.1.6)"
is_installed "installed" 0.1.6 "$home" "$home_windows"
expect_equal "the quiet uninstall command" "\"$home_windows\\OrVaneWmpPlugin-uninstall.exe\" /S" "$(registry "$entry_key" QuietUninstallString)"
expect_equal "what is in OrVane's folder" \
    "OrVaneApp.exe OrVaneWmpPlugin-LICENSE.txt OrVaneWmpPlugin-NOTICES.txt OrVaneWmpPlugin-uninstall.exe OrVaneWmpPlugin.dll notes.txt" \
    "$(cd "$home" && echo *)"
if [ "${1:-}" != --no-demo ]; then
    rm -f "$claim"
    kill "$wine_session" 2>/dev/null || true
    demo() { scripts/demo.sh --installed >build/logs/installed-demo.log 2>&1; }
    expect_that "the demo with the installed plug-in has failed: build/logs/installed-demo.log" demo
    claim_wine
    start_wine_session
fi

say "installing over it while a player holds it"
cp "tests/data/Track 06.wma" "$music/"
printf 'expect connected within 20000\nexpect disconnected within 50000\n' >"$work/app.txt"
start_player "$work/player.txt" ORVANE_APP_SCRIPT="$(windows_path "$work/app.txt")" \
    ORVANE_APP_TRANSCRIPT="$(windows_path "$work/app-says.txt")"
within 30 grep -qs 'connected' "$work/app-says.txt" || true
expect_equal "installing over a module in use" 194 "$(setup 0.1.7)"
is_installed "over a module in use" 0.1.7 "$home" "$home_windows"
expect_equal "set-aside files" 1 "$(find "$home" -name 'OrVaneWmpPlugin.dll.*.old' | wc -l)"
due=$(timeout 60 wine reg query 'HKLM\System\CurrentControlSet\Control\Session Manager' /v PendingFileRenameOperations </dev/null 2>/dev/null | tr -d '\r')
expect_that "the renamed module is not due for deletion: $due" grep -q 'OrVaneWmpPlugin\.dll\.[0-9A-F]*\.old' <<<"$due"
expect_equal "the module in place is due for deletion" "" "$(grep -E 'OrVaneWmpPlugin\.dll(\\0|$)' <<<"$due" || true)"
tell_player close
wait_for_player 20 || player_status=none
expect_equal "the player goes on, and ends with" 0 "$player_status"

say "older over newer, a failure over a good version, and uninstalling"
snapshot before-restart
expect_equal "set-aside files after a restart" 0 "$(find "$home" -name '*.old' | wc -l)"
snapshot newer
expect_equal "an older version, silently" 2 "$(setup 0.1.6)"
expect_equal "a module that cannot be registered, over a good one" 2 "$(setup 0.1.8)"
snapshot still-newer
expect_same "after what was refused and what failed, over a good version" newer still-newer
expect_equal "an older version with /downgrade" 0 "$(setup 0.1.6 /downgrade)"
is_installed "downgraded" 0.1.6 "$home" "$home_windows"
uninstall "$home"
snapshot removed
expect_same "after uninstalling" clean removed

say "after OrVane was removed"
expect_equal "installing once more" 0 "$(setup 0.1.6)"
in_wine reg delete "$settings_key" /v Path /f /reg:32
expect_equal "installing without OrVane" 0 "$(setup 0.1.6)"
is_installed "without OrVane" 0.1.6 "$default_home" 'C:\Program Files (x86)\OrVane'
expect_equal "what stays in the former folder" "OrVaneApp.exe notes.txt" "$(cd "$home" && echo *)"
uninstall "$default_home"
in_wine reg add "$settings_key" /v Path /t REG_SZ /d "$home_windows\\" /f /reg:32
snapshot at-last
expect_same "at last" clean at-last
in_wine reg delete 'HKCU\Software\Wine\AppDefaults\OrVaneWmpPlugin-vista-setup.exe' /f || true
in_wine reg delete "$settings_key" /v Path /f /reg:32 || true

echo "the installer: $passed passed, $failed failed"
[ $failed = 0 ]
