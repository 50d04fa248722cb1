#!/usr/bin/env bash
# Makes dist/ from the last commit, whatever lies uncommitted around it.
#   release.sh          dist/
#   release.sh --check  builds twice, in two folders, and compares every byte
# With ORVANE_SIGN_PFX and ORVANE_SIGN_PASSWORD_FILE (scripts/sign.sh) everything is signed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh

largest_module=2000000 # bytes; it takes as much of the player's address space
started=$SECONDS
step() { say "$(printf '%3d s' $((SECONDS - started)))  $*"; }

# export_tree FOLDER: the commit's files and nothing else.
export_tree() {
    rm -rf "$1" && mkdir -p "$1"
    git archive "$commit" | tar -x -C "$1"
}

build_module() {
    local tree=$1 name=$2
    step "building the module in $tree"
    (cd "$tree" && quietly "release-configure-$name" cmake --preset win32 -DORVANE_DEPS="$deps")
    quietly "release-build-$name" cmake --build "$tree/build/win32" --target OrVaneWmpPlugin
}

check_module() {
    local module=$1 size header
    size=$(stat -c %s "$module")
    [ "$size" -le $largest_module ] ||
        fail "the module has grown to $size bytes, and $largest_module is its limit" "look at what was linked in"
    header=$(i686-w64-mingw32-objdump -p "$module")
    for characteristic in DYNAMIC_BASE NX_COMPAT; do
        [[ $header == *$characteristic* ]] ||
            fail "the module is linked without $characteristic" "look at the link options in CMakeLists.txt"
    done
    step "the module takes $size bytes, with ASLR and NX"
}

# The kit for trying it all on a real Windows.
add_check_kit() {
    local tree=$1 output=$2 name=$3
    step "the check kit: building the tests and stand-ins (some minutes)"
    (cd "$tree" && quietly "release-check-kit-$name" env ORVANE_DEPS="$deps" \
        scripts/check-kit.sh --version="$version" --output="$output")
}

# make_release TREE OUTPUT NAME
make_release() {
    local tree=$1 output=$2 name=$3
    step "the files of ${commit:0:12}, without what is not committed"
    export_tree "$tree"
    build_module "$tree" "$name"
    check_module "$tree/build/win32/OrVaneWmpPlugin.dll"
    step "packing version $version"
    rm -rf "$output" && mkdir -p "$output"
    (cd "$tree" && quietly "release-package-$name" env ORVANE_DEPS="$deps" scripts/package.sh \
        --module=build/win32/OrVaneWmpPlugin.dll --version="$version" --output="$output")
    add_check_kit "$tree" "$output" "$name"
    (cd "$tree" && quietly "release-devkit-$name" env ORVANE_DEPS="$deps" scripts/devkit.sh --version="$version" --output="$output")
    (cd "$output" && sha256sum OrVaneWmpPlugin-* >SHA256SUMS)
}

check=0
case ${1:-} in
    '') ;;
    --check) check=1 ;;
    *) fail "the release has no option '$1'" "./dev release, or ./dev release --check" ;;
esac

scripts/setup.sh
install_packages nsis zip
commit=$(git rev-parse HEAD)
SOURCE_DATE_EPOCH=$(git show -s --format=%ct "$commit")
export SOURCE_DATE_EPOCH
export CCACHE_DISABLE=1 # it may rewrite paths, which the debug information then has
[ -z "$(git status --porcelain)" ] ||
    say "there are uncommitted changes here: they are not part of this release"

version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p')
git show "$commit:CHANGELOG.md" | grep -q "^## \[$version\]" ||
    fail "CHANGELOG.md says nothing about version $version" "add an entry '## [$version] - DATE', or correct the version in CMakeLists.txt"

if [ $check = 1 ]; then
    unset ORVANE_SIGN_PFX # a signature carries its time
    first=$(mktemp -d) second=$(mktemp -d -p "$build" --suffix=-another-folder)
    trap 'rm -rf "$first" "$second"' EXIT
    make_release "$first/tree" "$first/dist" first
    (
        export TZ=Pacific/Kiritimati LC_ALL=C
        umask 077
        make_release "$second/tree" "$second/dist" second
    )
    diff -rq "$first/dist" "$second/dist" ||
        fail "the same commit gave different bytes" "compare the two files named above"
    step "both folders gave the same bytes:"
    cat "$first/dist/SHA256SUMS"
    exit 0
fi

if [ -n "${ORVANE_SIGN_PFX:-}" ]; then
    install_packages osslsigncode openssl ca-certificates
    for name in ORVANE_SIGN_PFX ORVANE_SIGN_PASSWORD_FILE; do
        [ -r "${!name:-}" ] || fail "$name names no file that can be read" "name the certificate's PFX file, and the file with its password"
        export "$name=$(realpath "${!name}")"
    done
fi
make_release "$build/release/tree" "$build/release/dist" dist
rm -rf dist && mv "$build/release/dist" dist
step "done: dist/"
(cd dist && stat -c '%10s  %n' ./* | sed 's|\./||')
if [ -n "${ORVANE_SIGN_PFX:-}" ]; then
    say "the module, the installer and its uninstaller are signed, and the signatures verify"
else
    say "this release is unsigned (no ORVANE_SIGN_PFX): browsers may warn about the download, Windows" \
        "SmartScreen says 'Windows protected your PC' (More info, Run anyway), and the question for an" \
        "administrator's rights names an unknown publisher"
fi
