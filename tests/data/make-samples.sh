#!/usr/bin/env bash
# Makes the sample tracks and covers anew, byte for byte the same with the same ffmpeg. Needed only
# when a sample is to change: the tests and the demo use the files as they are in the repository.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

quiet=(-hide_banner -loglevel error -y)
exact=(-flags +bitexact -fflags +bitexact)

# track FILE FREQUENCY [NAME=VALUE...]: a tenth of a second of a tone, with tags as people have them
track() {
    local file=$1 frequency=$2 tags=()
    shift 2
    for tag in "$@"; do tags+=(-metadata "$tag"); done
    ffmpeg "${quiet[@]}" -f lavfi -i "sine=frequency=$frequency:duration=0.1:sample_rate=8000" -ac 1 \
        -c:a wmav1 -b:a 24k -packet_size 512 "${exact[@]}" "${tags[@]}" "$file"
}

# Wrong case, no album artist, lower-case genre.
track '01 scarborough FAIR.wma' 262 title='scarborough FAIR' artist='the wandering minstrels' \
    album='old songs vol 1' track=1 WM/PartOfSet=1/2 WM/Year=1998 genre=folk
# The same album and artist spelled another way, spaces at the end, no year.
track '02 Greensleeves.wma' 294 title='GREENSLEEVES  ' artist='The Wandering  Minstrels' \
    album='Old Songs, Vol. 1' track=02/10 WM/PartOfSet=1/2 genre=Folk
# Accents and Japanese in the name of the file and in the tags; no disc.
track 'Déjà vu 日本.wma' 330 title='déjà vu (日本)' artist='café müller' album='été à paris' \
    track=3 WM/Year=2003 genre=chanson
# Characters beyond the first 65,536, an album artist that differs from the artist.
track 'sakura.wma' 349 title='さくら 🌸' artist='東京少年合唱団' album='春の歌 🎵' \
    album_artist='VARIOUS ARTISTS' track=4 WM/PartOfSet=1/1 WM/Year=2004 genre='J-Pop'
# What a download left behind.
track '05_auld-lang-syne.wma' 392 title='auld lang syne [HQ] www.example.com' \
    artist='Burns, Robert' album='Unknown Album' WM/Composer='robert burns' track=5 \
    WM/PartOfSet=2/2 WM/Year=1788 comment='ripped by somebody'
# Nothing but a placeholder.
track 'Track 06.wma' 440 title='Track 6' artist='Unknown Artist'

ffmpeg "${quiet[@]}" -f lavfi -i testsrc=size=24x24:rate=1 -frames:v 1 "${exact[@]}" -q:v 8 cover.jpg
ffmpeg "${quiet[@]}" -f lavfi -i testsrc2=size=24x24:rate=1 -frames:v 1 "${exact[@]}" cover.png
