# Minimal systems in folders of their own, for the scripts that try Tandry on one. They source this file after lib.sh.
# shellcheck shell=bash

roots=''

# Before anything else that makes a root.
require_roots() {
    ((EUID == 0)) || die "only root can make a system in a folder and enter it: sudo $0"
    require_packages root
    unshare --mount --pid --fork true 2>/dev/null ||
        die "this machine allows no mounts, so no system in a folder: a container needs the right CAP_SYS_ADMIN"
    roots=$(mktemp -d -p "${TMPDIR:-/var/tmp}" tandry-XXXXXX)
    trap '_remove_roots' EXIT
}

# No process of a root outlives its command, and its mounts go with the command's own namespace.
_remove_roots() {
    rm -rf --one-file-system "$roots"
}

# make_root NAME RELEASE [ARCHITECTURE]: a system of Debian's essential packages and apt, in $roots/NAME.
make_root() {
    local root=$roots/$1 release=$2 architecture=${3:-$(dpkg --print-architecture)}
    arch-test "$architecture" >/dev/null ||
        die "this machine does not run $architecture; the package qemu-user-static lets it emulate others"
    say "making a minimal $release $architecture"
    debootstrap --variant=minbase --arch="$architecture" "$release" "$root" ${DEBIAN_MIRROR:+"$DEBIAN_MIRROR"} >"$root.log" 2>&1 || {
        tail -n 5 "$root.log" >&2
        die "debootstrap could not make a $release $architecture: is there a network? DEBIAN_MIRROR names another mirror"
    }
    cp --remove-destination "$(realpath /etc/resolv.conf)" "$root/etc/resolv.conf"
    # What `uname -m` says there.
    case $architecture in
    i386) echo i686 ;;
    *) uname -m ;;
    esac >"$root/.architecture"
    in_root "$1" apt-get -qq update
}

# in_root NAME COMMAND...: runs a command as root in $roots/NAME, with an environment of its own and without a terminal.
in_root() {
    local root=$roots/$1
    shift
    # shellcheck disable=SC2016 # the inner shell's own
    unshare --mount --pid --fork --kill-child bash -c '
        set -e
        mount -t proc proc "$1/proc"
        mount -t devpts -o newinstance,ptmxmode=0666 devpts "$1/dev/pts"
        mount -t tmpfs tmpfs "$1/dev/shm"
        exec setarch "$(cat "$1/.architecture")" chroot "$@"' bash "$root" \
        env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive ${http_proxy:+"http_proxy=$http_proxy"} "$@" </dev/null
}

# Lays the sources of the last commit into $roots/NAME/FOLDER.
put_sources() {
    local folder=$roots/$1$2
    mkdir -p "$folder"
    git -c safe.directory="$PWD" archive HEAD | tar -x -C "$folder"
}
