#!/usr/bin/env bash
# Packs one built module; called by release.sh from the tree of the commit, and by the installer's test.
#   package.sh --module=DLL --version=0.1.6 --output=FOLDER [--installer-only]
# The module's debug information lies beside it (DLL.debug). SOURCE_DATE_EPOCH dates what is packed:
# the same inputs give the same bytes. ORVANE_SIGN_PFX and ORVANE_SIGN_PASSWORD_FILE, when set, sign.
set -euo pipefail
. "$(dirname "$0")/common.sh"
. scripts/archive.sh

installer_only=0
for argument in "$@"; do
    case $argument in
        --module=*) module=$(realpath "${argument#*=}") ;;
        --version=*) version=${argument#*=} ;;
        --output=*) output=${argument#*=} ;;
        --installer-only) installer_only=1 ;;
        *) fail "package.sh has no option '$argument'" "read its first lines" ;;
    esac
done
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "'$version' is no version" "three numbers with dots"
mkdir -p "$output"
output=$(realpath "$output")
name=OrVaneWmpPlugin-$version
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

stage=$work/stage
mkdir -p "$stage"
cp "$module" "$stage/OrVaneWmpPlugin.dll"
scripts/sign.sh "$stage/OrVaneWmpPlugin.dll"
windows_text LICENSE >"$stage/LICENSE"
scripts/notices.sh | sed 's/$/\r/' >"$stage/NOTICES"

say "the installer"
nsis=(-V2 -WX -INPUTCHARSET UTF8 "-DVERSION=$version" "-DSTAGE=$stage"
    "-DSIZE_KB=$(du -k --apparent-size --total "$stage"/* | awk 'END { print $1 + 100 }')"
    "-DOUT=$work/$name-setup.exe")
for define in CLASS_ID=kClassId SETTINGS_KEY=kSettingsKey MODULE=kModuleFile; do
    text=$(name_of "${define#*=}")
    nsis+=("-D${define%=*}=$text")
done
scripts/sign.sh --wanted && nsis+=("-DSIGN=$PWD/scripts/sign.sh")
find "$stage" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
(cd packaging && makensis "${nsis[@]}" installer.nsi)
scripts/sign.sh "$work/$name-setup.exe" # its uninstaller is signed within
install -m 755 "$work/$name-setup.exe" "$output/$name-setup.exe"
[ $installer_only = 0 ] || exit 0

say "the archives"
for file in README.txt register.cmd unregister.cmd; do windows_text "packaging/$file" >"$stage/$file"; done
zip_folder "$stage" "$output/$name.zip"
mkdir "$work/symbols"
cp "$module.debug" "$work/symbols/OrVaneWmpPlugin.dll.debug"
cp docs/crash-addresses.md scripts/crash-line.sh "$work/symbols/"
zip_folder "$work/symbols" "$output/$name-symbols.zip"
