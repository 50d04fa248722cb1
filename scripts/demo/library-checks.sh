# shellcheck shell=bash
# Sourced by scripts/demo.sh: what the files themselves say about the cleaning, and the table.

# tag FILE NAME: as ffprobe reads it, "-" when there is none
tag() {
    local value
    # It takes every picture for the JPEG that its type says, and complains about others.
    value=$(ffprobe -v quiet -show_entries "format_tags=$2" -of default=noprint_wrappers=1:nokey=1 "$1")
    printf '%s' "${value:--}"
}

# The coded audio alone: the same however the tags change.
audio_hash() { ffmpeg -v quiet -i "$1" -map 0:a -c copy -f hash - </dev/null; }

picture_type() { exiftool -s3 -PictureMIMEType "$1"; }
picture_hash() { exiftool -b -Picture "$1" | sha256sum | cut -d' ' -f1; }

# How many columns a text takes on a terminal: East Asian characters and emoji take two.
columns() {
    local text=$1 wide
    wide=${text//[!ᄀ-ᅟ⺀-꓏가-힣豈-﫿︰-﹏＀-｠🌀-🫿]/}
    printf '%d' $((${#text} + ${#wide}))
}

# cell TEXT WIDTH: cut or filled to so many columns
cell() {
    local text=$1 width=$2
    if [ "$(columns "$text")" -gt "$width" ]; then
        while [ "$(columns "$text")" -gt $((width - 2)) ]; do text=${text%?}; done
        text="$text.."
    fi
    printf '%s%*s' "$text" $((width - $(columns "$text"))) ''
}

row() { printf '  %s %s %s %s %s\n' "$(cell "$1" 24)" "$(cell "$2" 36)" "$(cell "$3" 33)" "$(cell "$4" 15)" "$5"; }

# disc NUMBER COUNT: as a file holds it
disc() { if [ "$2" = - ]; then printf '%s' "$1"; else printf '%s/%s' "$1" "$2"; fi; }

# The playlists as the player printed them, one "NAME<tab>PATH" a line.
printed_playlists() {
    sed -n -e 's/^player: //' -e 's/\r$//' -e '/^playlist .*: [0-9]* item(s)$/{s/^playlist \(.*\): [0-9]* item(s)$/\1/;h;d}' \
        -e '/^  /{s/^  //;H;x;s/\([^\n]*\)\n\(.*\)/\1\t\2/;p;s/\t.*//;x}' "$1"
}

# Reads the report once; fills `table` with lines to print and calls check TITLE for each claim.
check_library() {
    local report=$1 music=$2 originals=$3 playlists
    local tags_right=1 covers_right=1 audio_same=1 untouched=1 filed=1 count=0 pictures=0 not_found=0 sound
    playlists=$(printed_playlists "$4")
    local -a line
    table=()
    table+=("$(row Track Before After 'Cover art' Playlist)")
    table+=("$(row ------------------------ ------------------------------------ --------------------------------- --------------- --------------------)")
    while IFS=$'\t' read -r -a line; do
        [ "${line[0]}" != index ] || continue
        count=$((count + 1))
        # The report's columns: 4 to 14 what the application read, 15 to 25 read back; title, artist, album artist, album,
        # year, disc, discs, genre, track number, art type, art bytes.
        local path=${line[1]} verdict=${line[2]} playlist=${line[3]} image=${line[26]}
        local name=${path##*\\}
        local file=$music/$name
        [ -f "$file" ] || { problem "the report names $path, which is not in $music"; tags_right=0; continue; }

        grep -qxF "$playlist"$'\t'"$path" <<<"$playlists" || {
            problem "the player's playlist $playlist does not have $name"; filed=0; }
        sound=$(audio_hash "$file") || sound='none can be read'
        [ "$sound" = "$(audio_hash "$originals/$name")" ] || {
            problem "$name: the audio data has changed ($sound)"; audio_same=0; }
        if [ "$verdict" = 'not found' ]; then
            not_found=$((not_found + 1))
            cmp -s "$file" "$originals/$name" || { problem "$name was not found, but its file has changed"; untouched=0; }
        else
            local pair wanted is
            for pair in "title:${line[15]}" "artist:${line[16]}" "album_artist:${line[17]}" "album:${line[18]}" \
                "WM/Year:${line[19]}" "genre:${line[22]}" "disc:$(disc "${line[20]}" "${line[21]}")"; do
                wanted=${pair#*:} is=$(tag "$file" "${pair%%:*}")
                # ffprobe keeps an empty count of discs as "1/".
                [ "${is%/}" = "$wanted" ] || { problem "$name: ffprobe reads ${pair%%:*} as '$is', not '$wanted'"; tags_right=0; }
            done
            if [ "$image" != - ]; then
                local image_file
                pictures=$((pictures + 1))
                image_file=$(unix_path "$image")
                [ "$(picture_hash "$file")" = "$(sha256sum <"$image_file" | cut -d' ' -f1)" ] || {
                    problem "$name: the picture in the file is not ${image_file##*/}"; covers_right=0; }
                [ "$(picture_type "$file")" = image/jpeg ] || {
                    problem "$name: the picture's type is $(picture_type "$file")"; covers_right=0; }
            fi
        fi

        local art=${line[24]}
        [ "$art" = - ] && art=none || art="$art, $(size_in_words "${line[25]}")"
        [ "${line[13]}" = - ] || art="was ${line[13]}; $art"
        local was=$originals/$name
        table+=("$(row "$name" "$(tag "$was" title)" "${line[15]}" "$art" "$playlist")")
        table+=("$(row '' "by $(tag "$was" artist)" "by ${line[16]}" '' '')")
        table+=("$(row '' "on $(tag "$was" album)" "on ${line[18]}" '' '')")
        table+=("$(row '' "album by $(tag "$was" album_artist)" "album by ${line[17]}" '' '')")
        table+=("$(row '' "$(tag "$was" WM/Year), disc $(tag "$was" disc), $(tag "$was" genre)" \
            "${line[19]}, disc $(disc "${line[20]}" "${line[21]}"), ${line[22]}" '' '')")
    done <"$report"

    local all=1
    [ "$count" = "$(find "$originals" -name '*.wma' | wc -l)" ] || { problem "the report has $count tracks"; all=0; }
    # A library in which there was nothing to look at shows nothing.
    [ "$pictures" -gt 0 ] || { problem "no track got a cover"; covers_right=0; }
    [ "$not_found" -gt 0 ] || { problem "no track was not found"; untouched=0; }
    check "$all" "The report has every track of the library"
    check "$tags_right" "ffprobe reads the cleaned tags in the files"
    check "$covers_right" "exiftool reads each cover in its file, byte for byte"
    check "$audio_same" "The audio data of every file is what it was"
    check "$filed" "The player's playlists have each track where it was filed"
    check "$untouched" "The files of tracks not found are what they were"
}

size_in_words() { if [ "$1" -lt 10000 ]; then printf '%d bytes' "$1"; else printf '%d KB' $((($1 + 512) / 1024)); fi; }
