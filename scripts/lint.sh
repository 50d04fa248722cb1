#!/usr/bin/env bash
# Format, includes and static checks of our own code.
#   lint.sh            everything (the static checks take some minutes)
#   lint.sh --quick    all but the static checks
#   lint.sh FILE...    these files
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh

scripts/setup.sh
install_packages clang-format clang-tidy shellcheck
quick=0
if [ "${1:-}" = --quick ]; then
    quick=1
    shift
fi
if [ $# -gt 0 ]; then sources=("$@"); else
    mapfile -t sources < <(git ls-files '*.cpp' '*.h')
fi
say "format of ${#sources[@]} files"
clang-format --dry-run -Werror "${sources[@]}" || fail "some files are not formatted" "clang-format -i FILE"
say "includes"
scripts/check-includes.sh
say "shell scripts"
mapfile -t scripts < <(git ls-files '*.sh' .ci/run dev)
shellcheck -x "${scripts[@]}" || fail "shellcheck has complaints" "mend them"
if [ $quick = 1 ]; then
    say "clean (./dev lint runs the static checks as well)"
    exit 0
fi

# clang reads the cross build's commands with mingw's headers in place of its own.
[ -f build/win32/build.ninja ] || quietly configure-win32 cmake --preset win32
mingw=/usr/i686-w64-mingw32/include
gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")
tidy=(clang-tidy -p build/win32 --quiet --extra-arg-before=--target=i686-w64-mingw32
    --extra-arg=-nostdinc++ --extra-arg=-Wno-unknown-warning-option
    --extra-arg=-isystem"$gcc/include/c++" --extra-arg=-isystem"$gcc/include/c++/i686-w64-mingw32"
    --extra-arg=-isystem"$mingw")
mapfile -t checked < <(printf '%s\n' "${sources[@]}" | grep '\.cpp$' | while read -r file; do
    grep -qF "$file\"" build/win32/compile_commands.json && printf '%s\n' "$file"
done)
say "static checks of ${#checked[@]} files (some seconds each)"
# shellcheck disable=SC2016 # the inner shell expands them
if ! printf '%s\n' "${checked[@]}" |
    xargs -P "$(nproc)" -n 1 sh -c 'out=$("$@" 2>&1) || { printf "%s\n" "$out"; exit 1; }' _ "${tidy[@]}"; then
    fail "the static checks found something" "the reports above say where"
fi
say "clean"
