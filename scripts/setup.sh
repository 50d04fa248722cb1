#!/usr/bin/env bash
# Installs everything that the build and the tests need on Debian 12 or 13: packages as root or with sudo,
# the rest as the calling user.
set -euo pipefail
. "$(dirname "$0")/common.sh"

packages=(wine wine64 g++-mingw-w64-i686-posix googletest cmake ninja-build ccache
    clang libclang-rt-dev xz-utils bzip2 ffmpeg libimage-exiftool-perl cmark-gfm zip)
# The 32-bit half of Wine, by version. The i386 index of a mirror may lag behind its packages.
declare -A wine_sha256=(
    [8.0~repack-4]=c992aad6a47d81b719514f5d06c5df10267f1e40a6f4f3b4e3f655cbbf308d57
    [10.0~repack-6]=fef4802a6553a17eaa40003333a86fc697440d1d21c5824f2dbd1c444f01527b)

stamp=$build/.setup-done
fingerprint=$(cat scripts/setup.sh scripts/common.sh /etc/os-release 2>/dev/null | sha256sum | cut -d' ' -f1)
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$fingerprint" ] && [ -x "$(command -v wine)" ]; then
    exit 0
fi

system=$(. /etc/os-release 2>/dev/null && echo "$ID ${VERSION_ID:-} $(uname -m)") || true
if [[ ! $system =~ ^debian\ ([0-9]+)\ x86_64$ ]] || [ -z "${debians[${BASH_REMATCH[1]}]:-}" ]; then
    fail "./dev knows Debian 12 and Debian 13 on x86_64, and this is ${system:-another system}" \
        "run it in one of them beside your own system, as root and with debootstrap installed: scripts/in-debian.sh 13 ${ORVANE_COMMAND:-test}"
fi
install_packages "${packages[@]}"

fetch=$build/fetch
rm -rf "$fetch" && mkdir -p "$fetch" "$deps" "$wine_lib"

# download FILE PLACE SHA256: from the pool of apt's mirror, where a file's place does not depend on the release.
download() {
    local mirror
    mirror=$(debian_mirror)
    [ -n "$mirror" ] || fail "apt lists no Debian mirror" "run 'apt-get update' as root; its sources have to name Debian's main archive"
    quietly "download-${1##*/}" /usr/lib/apt/apt-helper download-file "${mirror}pool/main/$2" "$1" "SHA256:$3"
}

# source_of NAME SHA256 PLACE: unpacks what is compiled into the module. It is pinned, as distributions change
# versions and apply patches of their own.
source_of() {
    [ "$(cat "$deps/$1/.sha256" 2>/dev/null)" != "$2" ] || return 0
    say "fetching the source of $1"
    download "$fetch/$1" "$3" "$2"
    mkdir "$fetch/$1.new"
    tar -x -f "$fetch/$1" -C "$fetch/$1.new" --strip-components=1
    echo "$2" >"$fetch/$1.new/.sha256"
    rm -rf "${deps:?}/$1"
    mv "$fetch/$1.new" "$deps/$1"
}
source_of juce 604050e7cac894e8d445da001aa240a55a8295140eb8b803ee852d0eef378c4e j/juce/juce_7.0.5+ds.orig.tar.xz
source_of pugixml 5c5ad5d7caeb791420408042a7d88c2c6180781bf218feca259fd9d840a888e1 p/pugixml/pugixml_1.13.orig.tar.gz
source_of zlib 71feb7947e3c00ef125f83b79a4e529bde31171e5babe48b391f06758d1ab0a1 z/zlib/zlib_1.2.13.dfsg.orig.tar.bz2

# Debian's 64-bit Wine runs 32-bit programs once it finds its 32-bit half.
if [ ! -f "$wine_lib/i386-windows/kernel32.dll" ]; then
    version=$(dpkg-query -W -f '${Version}' libwine)
    say "fetching the 32-bit half of Wine $version (100 MB)"
    if [ -n "${wine_sha256[$version]:-}" ]; then
        download "$fetch/libwine_i386.deb" "w/wine/libwine_${version#*:}_i386.deb" "${wine_sha256[$version]}"
    else
        # A newer one, through package lists of our own: the system's stay without i386.
        mkdir -p "$fetch/lists/partial"
        apt=(apt-get -oAPT::Architecture=i386 -oAPT::Architectures=i386 -oDir::State::Lists="$fetch/lists")
        "${apt[@]}" update >"$build/logs/wine-lists.log" 2>&1 || true # one of its indexes may be out of step
        (cd "$fetch" && quietly wine-download "${apt[@]}" download "libwine=$version" && mv libwine_*_i386.deb libwine_i386.deb)
    fi
    dpkg-deb --fsys-tarfile "$fetch/libwine_i386.deb" |
        tar -x -C "$fetch" --wildcards './usr/lib/i386-linux-gnu/wine/i386-windows/*'
    ln -sfn /usr/lib/x86_64-linux-gnu/wine/x86_64-unix "$wine_lib/x86_64-unix"
    mv "$fetch/usr/lib/i386-linux-gnu/wine/i386-windows" "$wine_lib/i386-windows"
fi
rm -rf "$fetch"

if [ ! -f "$WINEPREFIX/.ready" ]; then
    say "making a Wine prefix under build/ (15 s)"
    wine_environment
    stop_wine
    rm -rf "$WINEPREFIX" && mkdir -p "$WINEPREFIX"
    quietly wineboot wineboot -i
    # Windows without a screen: no X server is needed.
    quietly wine-null-driver wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
    wineserver -w
    touch "$WINEPREFIX/.ready"
fi
printf '%s\n' "$fingerprint" >"$stamp"
say "set-up is done"
