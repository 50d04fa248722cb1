# Shared by the scripts behind ./dev; whoever sources it is then in the top folder.
# shellcheck shell=bash disable=SC2034
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
cd "$top" || exit
build=$top/build
deps=$build/deps
wine_lib=$build/wine/lib
export WINEPREFIX=$build/wine/prefix

say() { printf '==> %s\n' "$*"; }
fail() {
    printf 'error: %s\n' "$1" >&2
    [ $# -lt 2 ] || printf 'next: %s\n' "$2" >&2
    exit 1
}

# name_of kSettingsKey: the text of that name in common/names/names.h.
name_of() {
    local text
    text=$(sed -n "s/^inline constexpr Name $1(\"\(.*\)\");\$/\1/p" "$top/common/names/names.h")
    [ -n "$text" ] || fail "common/names/names.h does not define $1" "correct the name in ${0##*/}"
    printf '%s' "${text//\\\\/\\}"
}

# The systems that ./dev is tested on.
declare -A debians=([12]=bookworm [13]=trixie)

# The Debian mirror that apt is configured for, with a slash at its end; nothing on a system without one.
debian_mirror() {
    # shellcheck disable=SC2016 # apt expands it
    { apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Label: Debian' 2>/dev/null || true; } | sed -n 1p
}

# Runs a step whose output matters only when it fails.
quietly() {
    local log=$build/logs/$1.log
    shift
    mkdir -p "$build/logs"
    "$@" >"$log" 2>&1 || {
        tail -n 25 "$log" >&2
        fail "'$*' failed; its output is in ${log#"$top"/}" "read the lines above, correct what they name, and run ./dev again"
    }
}

# Installs what is missing of these Debian packages: as root, or through sudo after saying so.
install_packages() {
    local package missing=() as_root=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "installing ${#missing[@]} Debian packages (about a minute): ${missing[*]}"
    if [ "$(id -u)" != 0 ]; then
        say "this needs root: sudo may ask for your password"
        as_root=(sudo)
        sudo -v || fail "the Debian packages above are missing, and sudo does not let you install them" \
            "have them installed: apt-get install ${missing[*]}"
    fi
    quietly apt-update "${as_root[@]}" apt-get update
    quietly apt-install "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# within SECONDS COMMAND...: repeats the command until it succeeds; fails after that time.
within() {
    local deadline=$((SECONDS + $1))
    until "${@:2}"; do
        [ $SECONDS -lt $deadline ] || return 1
        sleep 0.2
    done
}

# Wine never asks, never opens a debugger, and never touches the user's own prefix.
wine_environment() {
    export WINEDLLPATH=$wine_lib
    export WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=;winedbg.exe=d}
    # Wine takes file names as the locale has them, and tracks have é and 日本 in theirs.
    export LC_ALL=C.UTF-8
    unset DISPLAY
}

stop_wine() {
    [ ! -d "$WINEPREFIX" ] || wineserver -k >/dev/null 2>&1 || true
}

# Wine's services inherit the output streams of the process that starts them, which would keep a test
# runner waiting. An idle process without streams starts them first and keeps them running.
start_wine_session() {
    wine_environment
    wine cmd /c 'ping -n 36000 127.0.0.1 >nul' </dev/null >/dev/null 2>&1 &
    wine_session=$!
    disown "$wine_session"
    # Not before the services run may anything with streams of its own start.
    timeout 60 wine cmd /c exit </dev/null >/dev/null 2>&1 || true
}
end_wine_session() {
    kill "$wine_session" 2>/dev/null || true
    stop_wine
}
