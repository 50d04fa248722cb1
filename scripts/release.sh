#!/usr/bin/env bash
# Makes dist/ from the last commit; uncommitted changes are not used.
#   release.sh          dist/
#   release.sh --check  builds twice, in two folders, and compares every byte
# With ORVANE_SIGN_PFX and ORVANE_SIGN_PASSWORD_FILE (scripts/sign.sh) everything is signed.
set -euo pipefail
. "$(dirname "$0")/common.sh"

step() { say "$(printf '%3d s' $SECONDS)  $*"; }

# make_release FOLDER NAME: FOLDER/dist from the commit's files alone, which lie in FOLDER/tree.
make_release() {
    local tree=$1/tree output=$1/dist
    rm -rf "$tree" "$output" && mkdir -p "$tree" "$output"
    git archive "$commit" | tar -x -C "$tree"
    # in_tree STEP COMMAND...
    in_tree() { (cd "$tree" && quietly "release-$name-$1" env ORVANE_DEPS="$deps" "${@:2}"); }
    local name=$2 options=(--version="$version" --output="$output")
    step "building the module in $tree"
    in_tree configure cmake --preset win32 -DORVANE_DEPS="$deps"
    in_tree build cmake --build build/win32 --target OrVaneWmpPlugin
    (cd "$tree" && scripts/check-module.sh build/win32/OrVaneWmpPlugin.dll)
    step "packing version $version"
    in_tree package scripts/package.sh --module=build/win32/OrVaneWmpPlugin.dll "${options[@]}"
    step "the check kit, to try it all on a real Windows: building the tests and stand-ins (some minutes)"
    in_tree check-kit scripts/check-kit.sh "${options[@]}"
    in_tree devkit scripts/devkit.sh "${options[@]}"
    (cd "$output" && sha256sum OrVaneWmpPlugin-* >SHA256SUMS)
}

[ $# = 0 ] || [ "$*" = --check ] || fail "the release has no option '$*'" "./dev release, or ./dev release --check"
scripts/setup.sh
install_packages nsis zip
commit=$(git rev-parse HEAD)
SOURCE_DATE_EPOCH=$(git show -s --format=%ct "$commit")
export SOURCE_DATE_EPOCH
export CCACHE_DISABLE=1 # it may rewrite paths, which the debug information then has
[ -z "$(git status --porcelain)" ] || say "there are uncommitted changes here: they are not part of this release"

version=$(git show "$commit:CMakeLists.txt" | sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p')
git show "$commit:CHANGELOG.md" | grep -q "^## \[$version\]" ||
    fail "CHANGELOG.md says nothing about version $version" "add an entry '## [$version] - DATE', or correct the version in CMakeLists.txt"

if [ $# = 1 ]; then
    unset ORVANE_SIGN_PFX # a signature carries its time
    first=$(mktemp -d) second=$(mktemp -d -p "$build" --suffix=-another-folder)
    trap 'rm -rf "$first" "$second"' EXIT
    make_release "$first" first
    (
        export TZ=Pacific/Kiritimati LC_ALL=C
        umask 077
        make_release "$second" second
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
make_release "$build/release" dist
rm -rf dist && mv "$build/release/dist" dist
step "done: dist/"
(cd dist && stat -c '%10s  %n' -- *)
if scripts/sign.sh --wanted; then
    say "the module, the installer and its uninstaller are signed, and the signatures verify"
else
    say "this release is unsigned (no ORVANE_SIGN_PFX): browsers may warn about the download, and Windows about an" \
        "unknown publisher ('Windows protected your PC': More info, Run anyway)"
fi
