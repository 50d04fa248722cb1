#!/usr/bin/env bash
# Packs the kit for application developers: page, example, vectors, a session, stand-ins, try.cmd.
# Called by release.sh in the tree of the commit, whose build/win32 is configured, and by its test.
#   devkit.sh --version=0.1.6 --output=FOLDER    OrVaneWmpPlugin-VERSION-devkit.zip into FOLDER
#   devkit.sh --version=0.1.6 --stage=FOLDER     what it holds, unpacked
# SOURCE_DATE_EPOCH dates what is packed: the same inputs give the same bytes.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/archive.sh

output=
for argument in "$@"; do
    case $argument in
        --version=*) version=${argument#*=} ;;
        --output=*) output=$(realpath -m "${argument#*=}") ;;
        --stage=*) kit=$(realpath -m "${argument#*=}") ;;
        *) fail "devkit.sh has no option '$argument'" "read its first lines" ;;
    esac
done
if [ -n "$output" ]; then
    mkdir -p "$output"
    kit=$(mktemp -d)
    trap 'rm -rf "$kit"' EXIT
fi

# The page as one file, with its picture and a table of contents.
page_as_html() {
    cat <<TEXT
<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>OrVane's player plug-in $version: the protocol</title>
<style>body{font:15px/1.5 sans-serif;max-width:60em;margin:2em auto;padding:0 1em}table{border-collapse:collapse}
td,th{border:1px solid #bbb;padding:.25em .6em;text-align:left;vertical-align:top}svg{max-width:100%;height:auto}
pre,code{background:#f4f4f4;font:13px/1.4 Consolas,monospace}pre{padding:.6em;overflow:auto}</style></head><body>
TEXT
    cmark-gfm -e table docs/protocol.md | awk -v picture=docs/protocol-session.svg '
        /<img src="protocol-session.svg"/ { while ((getline line < picture) > 0) body = body line "\n"; next }
        /^<h2>/ {
            title = substr($0, 5, length($0) - 9)
            list = list "<li><a href=\"#s" ++count "\">" title "</a></li>\n"
            sub("<h2>", "<h2 id=\"s" count "\">")
        }
        { body = body $0 "\n" }
        /^<h1>/ { head = body; body = "" }
        END { printf "%s<ul>\n%s</ul>\n%s</body></html>\n", head, list, body }'
}

say "the kit's programs"
cmake --build build/win32 --target devkit
rm -rf "$kit" && mkdir -p "$kit/programs" "$kit/music"
for program in OrVaneApp.exe player.exe wmvcore.dll; do
    i686-w64-mingw32-strip -o "$kit/programs/$program" "build/win32/$program"
done
cp build/win32/OrVaneWmpPlugin.dll "$kit/programs/"
! scripts/sign.sh --wanted || scripts/sign.sh "$kit/programs/OrVaneWmpPlugin.dll"
cp tests/data/*.wma "$kit/music/"
cp -r devkit/vectors devkit/session "$kit/"
mkdir -p "$kit/example"
windows_text devkit/example/application.cpp >"$kit/example/application.cpp"
page_as_html >"$kit/protocol.html"
for file in README.txt try.cmd; do windows_text "devkit/$file" >"$kit/$file"; done
windows_text LICENSE >"$kit/LICENSE"
scripts/notices.sh | sed 's/$/\r/' >"$kit/NOTICES"
[ -z "$output" ] || zip_folder "$kit" "$output/OrVaneWmpPlugin-$version-devkit.zip"
