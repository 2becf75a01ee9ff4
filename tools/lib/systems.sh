# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2154 # root comes from common.sh
# Debian systems in a folder of their own, in which packages are built and tried. Needs root. Who makes or enters one does
# it in a mount name space of its own, so that nothing stays mounted.

debian_mirror=${KESTRANO_DEBIAN_MIRROR:-http://deb.debian.org/debian}

# has_system <folder>: a whole one; what an interrupted debootstrap left is none.
has_system() {
    [[ -e $1/etc/kestrano-system ]]
}

# make_system <release> <folder> [package]...: the least that Debian calls a system, and these packages.
make_system() {
    local release=$1 folder=$2 log=$root/build-package/logs/system-${2##*/}.log packages=ca-certificates package
    shift 2
    for package in "$@"; do
        packages+=,$package
    done
    say "Making a Debian system ($release) in $folder"
    rm -rf --one-file-system "$folder"
    mkdir -p "$folder"
    logged "$log" debootstrap --variant=minbase "--include=$packages" "$release" "$folder" "$debian_mirror" ||
        die "the system could not be made; the reason stands above"
    touch "$folder/etc/kestrano-system"
}

# What a system that was not started lacks.
mount_in_system() {
    local folder=$1
    mount -t proc proc "$folder/proc"
    mount --rbind /dev "$folder/dev"
    cp /etc/resolv.conf "$folder/etc/resolv.conf"
}

# in_system <folder> <command>...: as root, with nothing of the caller's environment.
in_system() {
    local folder=$1
    shift
    chroot "$folder" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# bind_in_system <folder> <path>: the same path leads to the same files there.
bind_in_system() {
    mkdir -p "$1$2"
    mount --bind "$2" "$1$2"
}
