# shellcheck shell=bash disable=SC2154
# Sourced: configures when needed and builds one preset.

build_preset() {
    local preset=$1
    shift
    scripts/setup.sh
    if [ ! -f "$build/$preset/build.ninja" ]; then
        say "configuring build/$preset"
        quietly "configure-$preset" cmake --preset "$preset"
    fi
    say "building build/$preset (the first time takes some minutes)"
    cmake --build --preset "$preset" "$@" || fail "the build failed" "read the first error above"
}

build_win32() { build_preset win32 "$@"; }
