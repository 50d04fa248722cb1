# shellcheck shell=bash disable=SC2154
# Sourced by the scripts that pack a release: reproducible files and archives. Needs `version`.
export LC_ALL=C.UTF-8 TZ=UTC
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-315619200}
umask 022

# zip_folder FOLDER ARCHIVE: in a fixed order, with fixed times and modes.
zip_folder() {
    find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
    find "$1" -type f -exec chmod 644 {} +
    rm -f "$2"
    (cd "$1" && find . -type f -printf '%P\n' | LC_ALL=C sort | zip -q -X -9 "$2" -@)
}
# Older Windows editors need CR LF.
windows_text() { sed -e "s/@VERSION@/$version/g" -e 's/$/\r/' "$1"; }
