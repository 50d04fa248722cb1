# shellcheck shell=bash disable=SC2154,SC2034
# Sourced by scripts/demo.sh and scripts/console.sh: the processes of one run under Wine, and
# what they need to find each other. Shares its variables with them: build, music, player_status,
# transcript_fd.

windows_path() { printf 'Z:%s' "${1//\//\\}"; }
unix_path() {
    local path=${1#Z:}
    printf '%s' "${path//\\//}"
}

# The pipes and the mutex exist once per prefix: one at a time.
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

# Whatever happened: nothing of ours stays.
end_everything() {
    trap - EXIT
    [ -z "${follower:-}" ] || kill "$follower" 2>/dev/null || true
    [ -z "${player_process:-}" ] || kill "$player_process" 2>/dev/null || true
    [ -z "${wine_session:-}" ] || kill "$wine_session" 2>/dev/null || true
    stop_wine
    rm -f "$claim"
}

register_plugin() {
    say "registering the plug-in with the 32-bit regsvr32, and the application's folder"
    wine 'C:\windows\syswow64\regsvr32.exe' /s "$(windows_path "$build/win32/OrVaneWmpPlugin.dll")" </dev/null >/dev/null 2>&1 ||
        fail "regsvr32 could not register build/win32/OrVaneWmpPlugin.dll" "./dev build, then try again"
    quietly register-folder wine reg add 'HKLM\Software\OrVaneMedia\Settings' /v Path /t REG_SZ \
        /d "$(windows_path "$build/win32")" /f /reg:32
}

# The log's file, as the system names the folder for all users' data.
shared_log() {
    local folder
    folder=$(wine reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Explorer\Shell Folders' \
        /v 'Common AppData' /reg:32 </dev/null 2>/dev/null | tr -d '\r' | sed -n 's/.*REG_SZ *//p')
    folder=${folder:-C:\\ProgramData}
    folder=${folder#C:}
    printf '%s%s/OrVaneMedia/OrVane.log' "$WINEPREFIX/drive_c" "${folder//\\//}"
}

# start_player OUTPUT [NAME=VALUE...]: with these in its environment and a prompt that tell_player
# writes to.
start_player() {
    local output=$1
    shift
    local fifo
    fifo=$(dirname "$output")/player.fifo
    rm -f "$fifo" && mkfifo "$fifo"
    env "$@" wine "$build/win32/player.exe" "--library=$(windows_path "$music")" --script=- \
        <"$fifo" >"$output" 2>&1 &
    player_process=$!
    exec {player_fd}>"$fifo"
}

tell_player() { printf '%s\n' "$1" >&"$player_fd"; }
player_runs() { kill -0 "$player_process" 2>/dev/null; }

# wait_for_player SECONDS: false when it does not end; its exit code is in player_status.
wait_for_player() {
    local deadline=$((SECONDS + $1))
    while player_runs; do
        [ $SECONDS -lt $deadline ] || return 1
        sleep 0.1
    done
    player_status=0
    wait "$player_process" || player_status=$?
    player_process=
}

# follow FILE: what is added to it can be read from transcript_fd.
follow() {
    exec {transcript_fd}< <(exec tail -n +1 -f "$1")
    follower=$!
}
