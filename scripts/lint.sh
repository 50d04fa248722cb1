#!/usr/bin/env bash
# Format, includes and static checks of our own code.
#   lint.sh            everything (the static checks take some minutes)
#   lint.sh --quick    all but the static checks
#   lint.sh FILE...    these files
set -euo pipefail
. "$(dirname "$0")/common.sh"

scripts/setup.sh
install_packages clang-format clang-tidy shellcheck git
quick=0
if [ "${1:-}" = --quick ]; then
    quick=1
    shift
fi
mapfile -t sources < <(if [ $# -gt 0 ]; then printf '%s\n' "$@"; else git ls-files '*.cpp' '*.h'; fi)
# Each version formats some lines in its own way: Debian 12's is the reference.
if clang-format --version | grep -q 'version 14\.'; then
    say "format of ${#sources[@]} files"
    clang-format --dry-run -Werror "${sources[@]}" || fail "some files are not formatted" "clang-format -i FILE"
else
    say "format: not checked, because that needs clang-format 14 of Debian 12 (scripts/in-debian.sh 12 lint --quick)"
fi
say "includes"
scripts/check-includes.sh
say "shell scripts"
git ls-files -z '*.sh' .ci/run dev | xargs -0 shellcheck || fail "shellcheck found errors" "correct them"
if [ $quick = 1 ]; then
    say "clean (./dev lint runs the static checks as well)"
    exit 0
fi

# clang reads the cross build's commands with mingw's headers in place of its own.
[ -f build/win32/build.ninja ] || quietly configure-win32 cmake --preset win32
gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
tidy=(clang-tidy -p build/win32 --quiet --extra-arg-before=--target=i686-w64-mingw32
    --extra-arg=-nostdinc++ --extra-arg=-Wno-unknown-warning-option)
for headers in "$gcc/c++" "$gcc/c++/i686-w64-mingw32" /usr/i686-w64-mingw32/include; do tidy+=(--extra-arg=-isystem"$headers"); done
mapfile -t checked < <(for file in "${sources[@]}"; do
    [[ $file != *.cpp ]] || ! grep -qF "$file\"" build/win32/compile_commands.json || printf '%s\n' "$file"
done)
say "static checks of ${#checked[@]} files (some seconds each)"
# shellcheck disable=SC2016 # the inner shell expands them
printf '%s\n' "${checked[@]}" |
    xargs -P "$(nproc)" -n 1 sh -c 'out=$("$@" 2>&1) || { printf "%s\n" "$out"; exit 1; }' _ "${tidy[@]}" ||
    fail "the static checks found something" "the reports above say where"
say "clean"
