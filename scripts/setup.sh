#!/usr/bin/env bash
# Everything the build and the tests need, on a fresh Debian 12: packages as root or through sudo,
# the rest as whoever calls.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh

packages=(wine wine64 g++-mingw-w64-i686-posix mingw-w64-tools libz-mingw-w64-dev
    juce-modules-source googletest cmake ninja-build pkg-config ccache dpkg-dev
    clang libclang-rt-14-dev zlib1g-dev ffmpeg libimage-exiftool-perl cmark-gfm zip)
pugixml_version=1.13-0.2
pugixml_sha256=5c5ad5d7caeb791420408042a7d88c2c6180781bf218feca259fd9d840a888e1

stamp=$build/.setup-done
fingerprint=$(cat "$0" scripts/common.sh | sha256sum | cut -d' ' -f1)
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$fingerprint" ] && [ -x "$(command -v wine)" ]; then
    exit 0
fi
mkdir -p "$build/logs"

install_packages "${packages[@]}"

# Debian ships pugixml as a native library only; we build its source for Windows.
if [ ! -f "$deps/pugixml/src/pugixml.cpp" ]; then
    say "fetching the source of pugixml $pugixml_version"
    work=$build/fetch/pugixml
    rm -rf "$work" && mkdir -p "$work/sources" "$work/lists/partial" "$work/cache/archives/partial" "$deps"
    for source in /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list; do
        [ -f "$source" ] || continue
        sed -e 's/^Types: .*/Types: deb-src/' -e 's/^deb /deb-src /' "$source" >"$work/sources/${source##*/}"
    done
    apt_options=(-oDir::Etc::sourcelist="$work/sources/sources.list" -oDir::Etc::sourceparts="$work/sources"
        -oDir::State::Lists="$work/lists" -oDir::Cache="$work/cache")
    quietly pugixml-lists apt-get "${apt_options[@]}" update
    (cd "$work" && quietly pugixml-source apt-get "${apt_options[@]}" source --download-only "pugixml=$pugixml_version")
    archive=$(echo "$work"/pugixml_*.orig.tar.*)
    echo "$pugixml_sha256  $archive" | sha256sum --check --quiet ||
        fail "the downloaded pugixml source is not the one we pinned" "remove build/fetch and try again; if it stays so, do not build with it"
    mkdir -p "$deps/pugixml.new" && tar -x -f "$archive" -C "$deps/pugixml.new" --strip-components=1
    mv "$deps/pugixml.new" "$deps/pugixml"
fi

# The 32-bit half of Wine: Debian's 64-bit Wine runs 32-bit programs once it finds it.
if [ ! -f "$wine_lib/i386-windows/kernel32.dll" ]; then
    version=$(dpkg-query -W -f '${Version}' libwine)
    say "fetching the 32-bit half of Wine $version (95 MB)"
    work=$build/fetch/wine
    rm -rf "$work" && mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/root"
    apt_options=(-oAPT::Architecture=i386 -oAPT::Architectures=i386 -oDir::State::Lists="$work/lists" -oDir::Cache="$work/cache")
    apt-get "${apt_options[@]}" update >"$build/logs/wine-lists.log" 2>&1 || true # one index may lag
    (cd "$work" && quietly wine-download apt-get "${apt_options[@]}" download "libwine=$version")
    dpkg-deb --fsys-tarfile "$work"/libwine_*_i386.deb |
        tar -x -C "$work/root" --wildcards './usr/lib/i386-linux-gnu/wine/i386-windows/*'
    mkdir -p "$wine_lib"
    ln -sfn /usr/lib/x86_64-linux-gnu/wine/x86_64-unix "$wine_lib/x86_64-unix"
    mv "$work/root/usr/lib/i386-linux-gnu/wine/i386-windows" "$wine_lib/i386-windows"
    rm -rf "$work"
fi

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
