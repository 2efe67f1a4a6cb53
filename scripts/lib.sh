# Shared by the scripts, which source this file. It changes the working directory to the project's folder.
# shellcheck shell=bash

set -euo pipefail
script=$(realpath "$0")
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# As many jobs as there are cores, but a gigabyte of memory for each: a compiler that is killed says nothing useful.
_jobs() {
    local cores memory
    cores=$(nproc)
    memory=$(awk '/^MemAvailable:/ { print int($2 / 1048576) }' /proc/meminfo 2>/dev/null || true)
    if ((${memory:-cores} < cores)); then
        cores=$((memory > 1 ? memory : 1))
    fi
    echo "$cores"
}

export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(_jobs)}
export CTEST_PARALLEL_LEVEL=${CTEST_PARALLEL_LEVEL:-$CMAKE_BUILD_PARALLEL_LEVEL}

say() {
    printf '%s\n' "==> $*" >&2
}

die() {
    printf '%s: %s\n' "${script##*/}" "$*" >&2
    exit 1
}

# Prints the comment at the head of the calling script.
usage() {
    sed -n '2,/^$/ s/^# \{0,1\}//p' "$script"
}

# The packages of these purposes, each once.
packages_for() {
    local purpose
    for purpose; do
        awk -v purpose="$purpose" '$1 == purpose { print $2; found = 1 } END { exit !found }' scripts/packages.txt ||
            die "scripts/packages.txt lists nothing for '$purpose'"
    done | sort -u
}

# Of these packages, the ones that are not installed.
_missing() {
    local package
    for package; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            echo "$package"
        fi
    done
}

_unknown() {
    local package
    for package; do
        if ! apt-cache policy "$package" 2>/dev/null | grep -q '^  Candidate: [^(]'; then
            return 0
        fi
    done
    return 1
}

# One command of apt-get, which asks nothing; its words are kept in `apt_words`. For require_packages.
_apt_get() {
    local command=$1
    shift
    apt_words=$("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -y -o APT::Update::Error-Mode=any -o Acquire::Retries=2 --no-install-recommends \
        "$command" "$@" 2>&1 </dev/null)
}

# Installs what is missing of the packages of these purposes.
require_packages() {
    local packages wanted missing
    packages=$(packages_for "$@")
    mapfile -t wanted <<<"$packages"

    if ! command -v dpkg-query apt-get >/dev/null; then
        say "this is no Debian system, so nothing is installed; needed, by Debian's names: ${wanted[*]}"
        return
    fi
    mapfile -t missing < <(_missing "${wanted[@]}")
    if ((${#missing[@]} == 0)); then
        return
    fi

    local as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            die "missing packages, and neither root nor sudo to install them. As root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    say "installing ${missing[*]}"
    # Package lists that are missing or out of date get one renewal.
    if { ! _unknown "${missing[@]}" && _apt_get install "${missing[@]}"; } ||
        { _apt_get update && _apt_get install "${missing[@]}"; }; then
        return
    fi
    grep '^[EW]:' <<<"$apt_words" | head -n 5 >&2 || true
    die "could not install ${missing[*]}: is there a network? As root: apt-get install ${missing[*]}"
}

# The headers of the shared libraries that are installed.
public_headers() {
    local folder
    for folder in interf database config models postgres; do
        sed -n "/^ *HEADERS *$/,/)/ s|^ *\([[:alnum:]]*\.h\))\{0,1\}$|$folder/\1|p" "$folder/CMakeLists.txt"
    done
}

# Configures and builds a preset; further arguments go to `cmake --build`.
build_preset() {
    local preset=$1
    shift
    say "building preset $preset"
    cmake --preset "$preset" >&2
    cmake --build --preset "$preset" "$@" >&2
}

# Configures build/dev with these options, which the build folder keeps.
configure_dev() {
    cmake --preset dev "$@" >&2
}

# Configures build/release with these options and builds a target of it. A build folder that is there keeps its other
# options, so that a developer's tests stay switched on.
build_release() {
    local target=$1
    shift
    say "building $target in preset release"
    if [[ ! -f build/release/build.ninja ]]; then
        cmake --preset release "$@" >&2
    else
        cmake -S . -B build/release "$@" >&2
    fi
    cmake --build --preset release --target "$target" >&2
}
