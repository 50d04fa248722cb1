#!/usr/bin/env bash
# The whole system at work: check.exe directs player, plug-in and application; then ffprobe and
# exiftool read the files. The exit code is 0 only when every check passed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh
. scripts/demo/processes.sh

options=()
work=$build # the folder demo/ in it is made anew
case $* in
    '') ;;
    --installed) # the short form, with whatever plug-in and application the prefix has
        options=(--installed)
        work=$build/installed
        ;;
    *) fail "the demo has no option '$*'" "./dev demo, or ./dev demo --installed for the short form with what is installed" ;;
esac
demo=$work/demo

build_preset win32 --target check OrVaneWmpPlugin OrVaneApp player wmvcore
claim_wine
trap end_everything EXIT
trap 'exit 130' INT TERM
start_wine_session

say "starting the player; its plug-in starts the application"
mkdir -p "$build/logs"
status=0
wine build/win32/check.exe demo "--work=$(windows_path "$work")" "${options[@]}" </dev/null |
    sed -u 's/\r$//' | tee "$build/logs/demo-screen.txt" || status=$?
[ $status = 0 ] || fail "not everything was seen" "read the lines above, then transcript.txt, player.txt and log.txt in ${demo#"$top"/}"

# Prints a file's tags under ffprobe's names.
declare -A names=([Title]=title [Author]=artist [WM/AlbumArtist]=album_artist [WM/AlbumTitle]=album
    [WM/Year]=WM/Year [WM/Genre]=genre [WM/PartOfSet]=disc)
tags=0 pictures=0 tracks=0
problems=()
while IFS=$'\t' read -r file what wanted; do
    if [ "$what" = picture ]; then
        pictures=$((pictures + 1))
        exiftool -b -Picture "$demo/$file" | cmp -s - "$demo/covers/$wanted" ||
            problems+=("exiftool: the picture in $file is not $wanted")
        type=$(exiftool -s3 -PictureMIMEType "$demo/$file")
        [ "$type" = image/jpeg ] || problems+=("exiftool: the picture in $file has the type '$type'")
        continue
    fi
    tags=$((tags + 1))
    # It takes every picture for the JPEG that its type says, and complains about others.
    is=$(ffprobe -v quiet -show_entries "format_tags=${names[$what]}" -of default=noprint_wrappers=1:nokey=1 "$demo/$file")
    is=${is%/} # an empty count of discs
    [ "${is:--}" = "$wanted" ] || problems+=("ffprobe: the tag $what in $file is '$is', not '$wanted'")
done <"$demo/expected.tsv"
# A checksum of the encoded audio only, which does not depend on the tags.
audio_hash() { ffmpeg -v quiet -i "$1" -map 0:a -c copy -f hash - </dev/null; }
for original in "$demo/originals"/*.wma; do
    tracks=$((tracks + 1))
    file=$demo/music/${original##*/}
    if ! now=$(audio_hash "$file") || [ "$now" != "$(audio_hash "$original")" ]; then
        problems+=("ffmpeg: the audio data of ${original##*/} has changed")
    fi
done
[ $tags -gt 0 ] || problems+=("there was no tag to read")
if [ ${#problems[@]} -gt 0 ]; then
    printf '  %s\n' "${problems[@]}" >&2
    fail "ffprobe, exiftool or ffmpeg finds something else in the files" "read the lines above, then look at the files in ${demo#"$top"/}"
fi
say "ffprobe reads the same $tags tags in the files, exiftool the $pictures pictures, ffmpeg the audio data of all $tracks tracks"
say "all $(grep -c '^  \[x\] ' "$build/logs/demo-screen.txt") things were seen; the conversation is in ${demo#"$top"/}/transcript.txt; try it yourself with ./dev console"
