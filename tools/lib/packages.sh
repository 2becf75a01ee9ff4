# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the commands name the groups that they need; root comes from common.sh
# Installs what is missing, and only that: on a machine that has everything neither apt nor sudo is called.

# Compiles the program and its tests.
packages_build=(cmake ninja-build g++ pkg-config cmark-gfm qt6-base-dev qt6-multimedia-dev libgstreamer1.0-dev
    libobs-dev libavcodec-dev libavformat-dev libpulse-dev libx11-dev
    libxcb1-dev libxcb-composite0-dev libxcb-damage0-dev libxcb-render0-dev libxcb-shape0-dev libxcb-shm0-dev
    libxcb-xfixes0-dev libxcb-xinput-dev openssl)

# Runs it. libobs, and Qt for its cameras, open these by name while they run, so no other package depends on all of them.
packages_run=(obs-studio obs-plugins gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    libqt6svg6 qt6-qpa-plugins libegl1 libgl1 libgl1-mesa-dri fonts-dejavu-core ca-certificates)

# Since Debian 13 Qt's SVG plug-ins, which draw the icons, are a package of their own.
# shellcheck source=/dev/null
case $(. /etc/os-release 2>/dev/null && echo "${ID:-}-${VERSION_ID:-}") in
    debian-12) ;;
    debian-*) packages_run+=(qt6-svg-plugins) ;;
esac

# A desktop where there is none, and the tools that look at it and at recordings.
packages_desktop=(dbus-daemon at-spi2-core xvfb openbox xcompmgr picom pulseaudio pulseaudio-utils ffmpeg xdotool wmctrl x11-utils x11-xkb-utils
    x11-xserver-utils tk procps fonts-noto-cjk)

# Is measured beside the program.
packages_bench=(simplescreenrecorder)

# Makes building faster; nothing depends on it.
packages_faster=(ccache mold)

packages_format=(clang-format)
packages_lint=(clang-format clang-tidy shellcheck)

# Builds for Windows.
packages_windows=(g++-mingw-w64-x86-64-posix mingw-w64-tools qt6-base-dev-tools qt6-multimedia-dev xz-utils)

# Runs the result.
packages_wine=(wine wine64)

# Looks at desktop entry, metainfo and man page.
packages_texts=(appstream desktop-file-utils man-db)

# Makes the package for Debian, and looks at it.
packages_debian=("${packages_texts[@]}" dpkg-dev file gzip librsvg2-bin lintian)

# Makes the installer for Windows.
packages_package=(nsis)

missing_packages() {
    local package
    for package in "$@"; do
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || echo "$package"
    done
}

# Sets as_root to what stands before a command that needs the rights of root.
find_root_rights() {
    as_root=()
    ((EUID == 0)) && return 0
    command -v sudo >/dev/null ||
        die "these packages are missing and installing them needs root: $*
    This user is not root and there is no sudo. As root, run:
    apt-get install --no-install-recommends $*"
    if ! sudo -n true 2>/dev/null && [[ ! -t 0 ]]; then
        die "these packages are missing and sudo wants a password, but there is no terminal to ask on. Run:
    sudo apt-get install --no-install-recommends $*"
    fi
    as_root=(sudo)
}

apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 \
        -o Acquire::Retries=3 "$@"
}

has_apt() {
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null
}

# ensure_packages <package>...
ensure_packages() {
    has_apt || die "this system has no apt-get; the commands install what they need on Debian 12 and its kin only.
    Elsewhere, install the likes of: $*"
    local missing as_root
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        say "All packages are there"
        return 0
    fi
    say "Missing packages: ${missing[*]}"
    find_root_rights "${missing[@]}"
    install_packages "${missing[@]}"
    say "Installed"
}

install_packages() {
    local log=$root/build/logs/packages.log lists=fresh
    mkdir -p "${log%/*}"
    say "Refreshing the package lists"
    if ! apt -o APT::Update::Error-Mode=any update >"$log" 2>&1; then
        lists=stale
        say "The package lists cannot be refreshed (no network?); going on with those that are there"
    fi
    say "Installing"
    if ! apt install --no-install-recommends "$@" >>"$log" 2>&1; then
        grep -E '^(E|W|Err):?' "$log" | tail -n 12 >&2 || tail -n 12 "$log" >&2
        [[ $lists == fresh ]] || die "installing failed, and the package lists could not be refreshed: is there a network?"
        die "installing failed; apt's reason stands above"
    fi
}
