# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
#
# Sourced by the scripts. Changes to the top folder and sets up the compiler cache.
#
# On a terminal, builds and tests show one line of progress. Elsewhere they are silent. Failures are always shown, and
# everything is in log files in build/log.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
log_dir=$PWD/build/log
mkdir -p "$log_dir"

# Clones in different folders share the cache: it has paths relative to this folder.
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
fi

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# in_turn PRESET COMMAND...: two scripts use the same build folder, but never change it at the same time.
in_turn() {
    flock --close "$log_dir/$1.lock" "${@:2}"
}

# configure PRESET [ARGUMENT...]: arguments for cmake.
configure() {
    local log=$log_dir/configure-$1.log
    in_turn "$1" cmake --preset "$@" >"$log" 2>&1 || {
        tail -n 30 "$log" >&2
        fail "cannot configure the preset $1 (log: $log)"
    }
}

# build PRESET [ARGUMENT...]: arguments for cmake --build.
build() {
    local log=$log_dir/build-$1.log
    echo "Building with the preset $1 ..."
    if [[ -t 1 ]]; then
        in_turn "$1" cmake --build --preset "$@" --parallel "$(nproc)" || fail "the build failed"
        return
    fi
    in_turn "$1" cmake --build --preset "$@" --parallel "$(nproc)" >"$log" 2>&1 || {
        # Ninja starts the output of each failed command with this word, and stops.
        sed -n '/^FAILED: /,$p' "$log" | head -n 200 >&2
        fail "the build failed (log: $log)"
    }
}

# run_tests PRESET [ARGUMENT...]: arguments for ctest. ctest_launcher runs it; by default it runs directly.
ctest_launcher=()
run_tests() {
    local log=$log_dir/test-$1.log status=0
    echo "Running the tests of the preset $1 (log: build/log/test-$1.log) ..."
    if [[ -t 1 ]]; then
        "${ctest_launcher[@]}" ctest --preset "$@" --progress --output-log "$log"
        return
    fi
    "${ctest_launcher[@]}" ctest --preset "$@" --output-log "$log" 2>&1 | show_failures || status=${PIPESTATUS[0]}
    return "$status"
}

# Drops the lines about the start of a test and about success.
show_failures() {
    grep -aEv --line-buffered '^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed +[0-9.]+ sec$'
}
