# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
#
# Sourced by the scripts that build parts of other projects for Windows. A finished part stays in $XDG_CACHE_HOME/vigil.

readonly target=x86_64-w64-mingw32

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# Reads all of the compiler's output: one that writes into a closed pipe fails.
check_compiler() {
    "$target-g++" -v 2>&1 | grep '^Thread model: posix' >/dev/null ||
        fail "$target-g++ must be the variant with POSIX threads; see: update-alternatives --config $target-g++"
}

# versions_of PACKAGE: what apt knows of a binary package, the newest first: lines of "version archive suite component".
versions_of() {
    local versions
    versions=$(apt-cache madison "$1" | awk -F '|' '
        { split($3, words, " "); sub("/", " ", words[2]); gsub(" ", "", $2); print $2, words[1], words[2] }')
    [[ -n $versions ]] || fail "apt-get does not know where $1 comes from; run: apt-get update"
    echo "$versions"
}

# fetch_source SOURCE PACKAGE: gets and patches the sources of the binary package, into the folder SOURCE of the current
# folder. Takes the newest version that can be had: lists may name a file before the archive has it, or after it is gone.
# The package lists for this stay apart from the system's.
fetch_source() {
    local version origin versions
    versions=$(versions_of "$2")
    while read -r version origin; do
        rm -rf apt
        mkdir -p apt/lists/partial apt/cache/archives/partial
        echo "deb-src $origin" >apt/sources.list
        local apt=(apt-get --quiet -o Dir::Etc::SourceList="$PWD/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
            -o Dir::State::Lists="$PWD/apt/lists" -o Dir::Cache="$PWD/apt/cache" -o APT::Sandbox::User=)
        if "${apt[@]}" update && "${apt[@]}" source "$1=$version"; then
            mv "$1"-*/ "$1"
            return
        fi
    done <<<"$versions"
    echo "no version of $1 can be fetched"
    return 1
}

# build_once NAME KEY FUNCTION: prints the folder of a part, and builds it if it is not complete. FUNCTION builds in the
# current folder, an empty one, and installs into its argument.
build_once() {
    local cache folder
    cache=${XDG_CACHE_HOME:-$HOME/.cache}/vigil
    folder=$cache/$1-windows-$2
    mkdir -p "$cache"
    exec 9>"$folder.lock"
    flock 9
    if [[ ! -e $folder/complete ]]; then
        echo "Building $1 for Windows in $folder; this takes about ten minutes ..." >&2
        rm -rf "$folder" "$folder.work"
        mkdir "$folder.work" "$folder"
        # In the background: bash ignores "set -e" on the left of "||".
        (cd "$folder.work" && "$3" "$folder") >"$folder.log" 2>&1 9>&- &
        wait "$!" || fail "failed; the end of $folder.log:"$'\n'"$(tail -n 20 "$folder.log")"
        rm -rf "$folder.work"
        touch "$folder/complete"
    fi
    echo "$folder"
}
