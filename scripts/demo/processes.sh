# shellcheck shell=bash disable=SC2154,SC2034
# Sourced by scripts that run the player and the application: one such script at a time, and nothing
# of it stays behind. Needs scripts/common.sh.

# Wine's file names are in the locale's encoding, and tracks have é and 日本 in theirs.
export LC_ALL=C.UTF-8

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# The pipes and the mutex exist once per prefix.
claim_wine() {
    claim=$build/wine-user.pid
    local other
    if [ -f "$claim" ]; then
        other=$(cat "$claim")
        if [ -n "$other" ] && kill -0 "$other" 2>/dev/null; then
            fail "process $other, another ./dev demo or ./dev console, is using the player and the application" "end it, or wait for it"
        fi
    fi
    echo $$ >"$claim"
}

end_everything() {
    trap - EXIT
    [ -z "${wine_session:-}" ] || kill "$wine_session" 2>/dev/null || true
    stop_wine
    rm -f "$claim"
}

# start_player OUTPUT NAME=VALUE...: with these in its environment, the tracks in $music, and a
# prompt that player_fd writes to.
start_player() {
    mkfifo "$1.input"
    env "${@:2}" wine "$build/win32/player.exe" "--library=$(windows_path "$music")" --script=- \
        <"$1.input" >"$1" 2>&1 &
    player_process=$!
    exec {player_fd}>"$1.input"
}
tell_player() { printf '%s\n' "$1" >&"$player_fd"; }

# wait_for_player SECONDS: false when it does not end; its exit code is in player_status.
wait_for_player() {
    timeout "$1" tail --pid="$player_process" -f /dev/null || return 1
    player_status=0
    wait "$player_process" || player_status=$?
}
