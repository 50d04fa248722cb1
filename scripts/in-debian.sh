#!/usr/bin/env bash
# Runs ./dev in a clean clone of the last commit on Debian 12 or 13, whatever system this is. Needs root.
#   in-debian.sh RELEASE [--folder=FOLDER] COMMAND [ARGUMENT...]     for example: in-debian.sh 13 test
# debootstrap installs that Debian into FOLDER (build/debian-RELEASE) the first time. The clone is
# FOLDER/root/orvane; its build/ is there to be read until the next call.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/common.sh

codename=${debians[${1:-none}]:-}
[ -n "$codename" ] || fail "in-debian.sh knows Debian $(known_debians), not '${1:-}'" "scripts/in-debian.sh 13 test"
folder=$build/debian-$1
shift
if [[ ${1:-} == --folder=* ]]; then
    folder=$(realpath -m "${1#*=}")
    shift
fi
[ $# -gt 0 ] || fail "no command for ./dev is given" "scripts/in-debian.sh 13 test"
[ "$(id -u)" = 0 ] || fail "only root may install a system in a folder" "sudo $0 ..."
command -v debootstrap >/dev/null || fail "debootstrap is missing" "install the package debootstrap of your system"

if [ ! -f "$folder/.installed" ]; then
    say "installing Debian's $codename into $folder"
    rm -rf --one-file-system "$folder"
    mkdir -p "$folder"
    mirror=$(debian_mirror)
    quietly "debootstrap-$codename" debootstrap --variant=minbase --include=git,ca-certificates \
        "$codename" "$folder" ${mirror:+"$mirror"}
    touch "$folder/.installed"
fi

say "cloning the last commit"
clone=$folder/root/orvane
rm -rf --one-file-system "$clone"
git clone --quiet "$top" "$clone"
cp -L /etc/resolv.conf "$folder/etc/resolv.conf"

say "running ./dev $* in $folder"
# The mounts and the processes belong to namespaces that the kernel ends with this command, also when
# it is killed; nobody else ever sees the mounts.
# shellcheck disable=SC2016 # the inner shell expands them
exec unshare --mount --pid --fork --kill-child --mount-proc="$folder/proc" sh -ec '
    folder=$1
    shift
    mount --rbind /dev "$folder/dev"
    mount -t tmpfs tmpfs "$folder/dev/shm"
    exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" LC_ALL=C.UTF-8 \
        ${http_proxy:+http_proxy="$http_proxy"} \
        chroot "$folder" sh -ec "cd /root/orvane && exec ./dev \"\$@\"" sh "$@"' sh "$folder" "$@"
