#!/usr/bin/env bash
# Runs ./dev in a clean clone of the last commit on Debian 12 or 13, whatever system this is. Needs root.
#   in-debian.sh RELEASE [--folder=FOLDER] COMMAND [ARGUMENT...]     for example: in-debian.sh 13 test
# debootstrap installs that Debian into FOLDER (build/debian-RELEASE) the first time; remove the folder to
# begin with a bare system again. The clone is FOLDER/srv/orvane; its build/ stays until the next call.
set -euo pipefail
. "$(dirname "$0")/common.sh"

codename=${debians[${1:-none}]:-}
[[ -n $codename && $# -ge 2 ]] || fail "in-debian.sh needs a Debian (12 or 13) and a command for ./dev" "scripts/in-debian.sh 13 test"
[ "$(id -u)" = 0 ] || fail "only root may install a system in a folder" "sudo scripts/in-debian.sh $*"
folder=$build/debian-$1
shift
if [[ $1 == --folder=* ]]; then
    folder=$(realpath -m "${1#*=}")
    shift
fi

# The mark tells a system of ours, and whether it is complete.
mark=$folder/.orvane-debian
if [ "$(cat "$mark" 2>/dev/null)" != "$codename" ]; then
    [ -e "$mark" ] || [ -z "$(ls -A "$folder" 2>/dev/null)" ] ||
        fail "$folder has something else in it" "name an empty folder, or a new one"
    command -v debootstrap >/dev/null || fail "debootstrap is missing" "install your system's package debootstrap"
    say "installing Debian's $codename into $folder"
    rm -rf --one-file-system "$folder"
    mkdir -p "$folder"
    echo incomplete >"$mark"
    mirror=$(debian_mirror)
    quietly "debootstrap-$codename" debootstrap --variant=minbase --include=git,ca-certificates \
        "$codename" "$folder" ${mirror:+"$mirror"}
    echo "$codename" >"$mark"
fi

exec {lock}<"$mark"
flock -n "$lock" || fail "another in-debian.sh uses $folder" "wait for it, or name another folder"

say "cloning the last commit"
rm -rf --one-file-system "$folder/srv/orvane"
git clone --quiet "$top" "$folder/srv/orvane"
cp -L /etc/resolv.conf "$folder/etc/resolv.conf"

say "running ./dev $* in $folder"
# Mounts and processes are in namespaces of their own: the kernel ends them with this command, also when
# it is killed, and nobody else sees the mounts.
# shellcheck disable=SC2016 # the inner shells expand them
exec unshare --mount --pid --fork --kill-child --mount-proc="$folder/proc" sh -ec '
    folder=$1
    shift
    mount --rbind /dev "$folder/dev"
    mount -t tmpfs tmpfs "$folder/dev/shm"
    exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" LC_ALL=C.UTF-8 \
        ${http_proxy:+http_proxy="$http_proxy"} \
        chroot "$folder" sh -ec "cd /srv/orvane && exec ./dev \"\$@\"" sh "$@"' sh "$folder" "$@"
