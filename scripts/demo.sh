#!/usr/bin/env bash
# The whole system at work: the player loads the plug-in, the plug-in starts the application, and
# the application cleans a library of real music files. Ends with 0 only when all of it was seen.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh
. scripts/demo/library-checks.sh
. scripts/demo/processes.sh

# File names and tags have é and 日本 in them; Wine takes file names as the locale has them.
export LC_ALL=C.UTF-8

parts=(1-link 2-one-track 3-library 4-close)
installed=0
for argument in "$@"; do
    case $argument in
        --link) parts=(1-link 2-one-track 4-close) ;;
        --installed) installed=1 ;; # whatever plug-in and application the prefix has
        *) fail "the demo has no option '$argument'" "./dev demo, or ./dev demo --link for the short form without the library" ;;
    esac
done

build_preset win32 --target OrVaneWmpPlugin OrVaneApp player wmvcore

demo=$build/demo
[ $installed = 0 ] || demo=$build/installed-demo # what a failed demo has left stays to be read
music=$demo/music
originals=$demo/originals
claim_wine
trap end_everything EXIT
trap 'exit 130' INT TERM

say "copying the sample tracks to ${music#"$top"/}"
rm -rf "$demo" && mkdir -p "$music" "$originals" "$demo/covers"
cp tests/data/*.wma "$music/"
cp tests/data/*.wma "$originals/"
make_covers() {
    # One cover for all; of the others one is a PNG, one larger than 64 KB.
    ffmpeg -v error -y -f lavfi -i testsrc=size=300x300:rate=1 -frames:v 1 -q:v 5 "$demo/covers/cover.jpg"
    ffmpeg -v error -y -f lavfi -i testsrc2=size=200x200:rate=1 -frames:v 1 "$demo/covers/sakura.png"
    ffmpeg -v error -y -f lavfi -i "nullsrc=size=500x500:rate=1,geq=random(1)*255:128:128" -frames:v 1 -q:v 2 \
        "$demo/covers/02 Greensleeves.jpg"
}
quietly demo-covers make_covers
track="01 scarborough FAIR.wma"

start_wine_session
[ $installed = 1 ] || register_plugin
log_file=$(shared_log)
log_before=0
[ ! -f "$log_file" ] || log_before=$(stat -c %s "$log_file")

script=$demo/script.txt
transcript=$demo/transcript.txt
{
    printf 'set track "%s"\n' "$(windows_path "$music/$track")"
    printf 'set tracks %d\n' "$(find "$music" -name '*.wma' | wc -l)"
    printf 'set covers "%s"\n' "$(windows_path "$demo/covers")"
    printf 'set report "%s"\n' "$(windows_path "$demo/report.tsv")"
    for part in "${parts[@]}"; do cat "scripts/demo/$part.txt"; done
} >"$script"
: >"$transcript"

problems=()
problem() { problems+=("$1"); }
ticks=()
failures=0
check() {
    if [ "$1" = 1 ]; then ticks+=("  [x] $2"); else ticks+=("  [ ] $2") failures=$((failures + 1)); fi
}

# What the files say in the middle of it all.
one_track_seen=0
check_one_track() {
    local file=$demo/one-track.wma # as it is now: the application goes on meanwhile
    cp "$music/$track" "$file"
    say "ffprobe about $track:"
    ffprobe -v error -show_entries format_tags -of default=noprint_wrappers=1 "$file" | sed 's/^TAG:/        /'
    if [ "$(tag "$file" title)" = 'Scarborough Fair (Demo)' ] && [ "$(tag "$file" artist)" = 'Les Minéstrels' ] &&
        [ "$(tag "$file" album_artist)" = 'The Wandering Minstrels' ] && [ "$(tag "$file" WM/Year)" = 1999 ] &&
        [ "$(tag "$file" disc)" = 2/3 ]; then
        one_track_seen=1
    else
        problem "ffprobe does not read what was written to $track"
    fi
}

say "starting the player; its plug-in starts the application and gives it three seconds"
start_player "$demo/player.txt" ORVANE_APP_SCRIPT="$(windows_path "$script")" \
    ORVANE_APP_TRANSCRIPT="$(windows_path "$transcript")"

# The application's transcript tells how far it is, and what it wants of the player and of us.
follow_transcript() {
    local line deadline=$((SECONDS + 90)) started_by=$((SECONDS + 20)) brief=0
    while [ $SECONDS -lt $deadline ]; do
        if ! IFS= read -r -t 1 -u "$transcript_fd" line; then
            [ -s "$transcript" ] || [ $SECONDS -lt $started_by ] || {
                problem "the plug-in did not start the application"
                return
            }
            continue
        fi
        # The cleaning takes seven commands a track: its own lines tell as much.
        case $line in
            *'  cleaning '*' tracks') brief=1 ;;
            *'  clean-library: '* | *'error: '*) brief=0 ;;
        esac
        if [ $brief = 0 ] || [[ $line != *'  command '* && $line != *'  response '* && $line != '        '* ]]; then
            printf '    %s\n' "$line"
        fi
        case $line in
            *'  player> '*) tell_player "${line#*  player> }" ;;
            *'  check one-track') check_one_track ;;
            *'  result: '*) return ;;
        esac
    done
    problem "the application was not done within 90 seconds"
}
follow "$transcript"
follow_transcript
# A player that was not asked to close is not worth waiting for.
patience=10
[ ${#problems[@]} = 0 ] && grep -q '  result: good' "$transcript" || patience=0
player_result=none
! wait_for_player $patience || player_result=$player_status

echo
say "the player's own words"
sed 's/^/    /' "$demo/player.txt"
say "the shared log, ${log_file#"$WINEPREFIX"/}"
new_log=$demo/log.txt
: >"$new_log"
[ ! -f "$log_file" ] || tail -c +$((log_before + 1)) "$log_file" >"$new_log"
tail -n 20 "$new_log" | sed 's/^/    /'

# Every step that the scripts name must have been told as good.
for part in "${parts[@]}"; do
    while IFS= read -r title; do
        good=0
        ! grep -qF "  step good: $title" "$transcript" || good=1
        check $good "$title"
    done < <(sed -n 's/^step //p' "scripts/demo/$part.txt")
    if [ "$part" = 2-one-track ]; then check $one_track_seen "ffprobe reads in the file what was written"; fi
    if [ "$part" = 3-library ]; then
        if [ -f "$demo/report.tsv" ]; then
            check_library "$demo/report.tsv" "$music" "$originals" "$demo/player.txt"
        else
            check 0 "The report of the cleaning was written"
        fi
    fi
done
started=0
! grep -q 'launched by wmp' "$transcript" || started=1
check $started "The plug-in started the application, through the registry, with --launched-by=wmp"
good=0
! grep -q '  result: good' "$transcript" || good=1
check $good "The application met every check of its script"
good=0
[ "$player_result" != 0 ] || good=1
check $good "The player ended by itself, without a complaint"
logged=0
! grep -q 'OrvaneMessage: XML parsing error occured' "$new_log" || logged=1
check $logged "The shared log tells of the document that was not XML"

echo
say "what was to be seen"
printf '%s\n' "${ticks[@]}"
if [ -n "${table+set}" ]; then
    echo
    say "the library, before and after, as ffprobe and exiftool found it in the files"
    printf '%s\n' "${table[@]}"
fi
echo
if [ "$failures" -gt 0 ]; then
    grep -E 'error: |PROBLEM ' "$transcript" | head -n 5 | sed 's/^/  application: /' >&2 || true
    [ ${#problems[@]} = 0 ] || printf '  %s\n' "${problems[@]}" >&2
    fail "$failures of ${#ticks[@]} things were not seen" \
        "read the lines above, then transcript.txt, player.txt and log.txt in ${demo#"$top"/}"
fi
say "all ${#ticks[@]} things were seen; the conversation is in ${demo#"$top"/}/transcript.txt; try it yourself with ./dev console"
