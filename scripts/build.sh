# shellcheck shell=bash disable=SC2154
# Sourced: configures when needed and builds one preset.

build_preset() { # PRESET [OPTION...]
    scripts/setup.sh
    [ -f "$build/$1/build.ninja" ] || { say "configuring build/$1"; quietly "configure-$1" cmake --preset "$1"; }
    say "building build/$1 (the first time takes some minutes)"
    cmake --build --preset "$@" || fail "the build failed" "read the first error above"
}
