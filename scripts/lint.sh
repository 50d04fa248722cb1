#!/usr/bin/env bash
# Format and static checks of our own code. Arguments: files to check (default: all; takes minutes).
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh
. scripts/build.sh

for tool in clang-format clang-tidy shellcheck; do
    command -v $tool >/dev/null || {
        say "installing $tool"
        quietly "apt-$tool" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $tool
    }
done
build_preset win32

if [ $# -gt 0 ]; then sources=("$@"); else
    mapfile -t sources < <(git ls-files '*.cpp' '*.h')
fi
say "format of ${#sources[@]} files"
clang-format --dry-run -Werror "${sources[@]}" || fail "some files are not formatted" "clang-format -i FILE"
say "shell scripts"
mapfile -t parts < <(git ls-files 'scripts/*/*.sh')
shellcheck -x dev scripts/*.sh "${parts[@]}" || fail "shellcheck has complaints" "mend them"

# clang reads the cross build's commands with mingw's headers in place of its own.
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
printf '%s\n' "${checked[@]}" | xargs -P "$(nproc)" -n 1 "${tidy[@]}" ||
    fail "the static checks found something" "the first report above says where"
say "clean"
