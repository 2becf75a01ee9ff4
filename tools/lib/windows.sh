# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the commands use what is set here; root comes from common.sh
# The Windows kit: where it comes from and where it is unpacked.

kit=$root/build-windows-kit

# What the build for Windows is made for: the unit tests, and the tests that use the program.
windows_unit_targets=(kestrano_unit_tests)
windows_program_targets=(kestrano kestrano_test_win32probe kestrano_test_pattern)

find_kit() {
    kit_source=${KESTRANO_WINDOWS_KIT:-$root/../shared/windows-kit/kit.tar.xz}
    [[ -e $kit_source ]] || die "there is no Windows kit at $kit_source
    Set KESTRANO_WINDOWS_KIT to the archive kit.tar.xz or to the folder that it unpacks to."
    kit_source=$(realpath "$kit_source")
}

# Leaves the kit's folder in KESTRANO_WINDOWS_KIT_DIR, which the preset "windows" reads. An archive is unpacked once, and
# again when it has changed.
unpack_kit() {
    find_kit
    if [[ -d $kit_source ]]; then
        kit=$kit_source
    else
        local stamp
        stamp=$(sha256sum "$kit_source" | cut -d' ' -f1)
        if [[ $(cat "$kit/.unpacked" 2>/dev/null) != "$stamp" ]]; then
            say "Unpacking $kit_source"
            rm -rf "$kit"
            mkdir -p "$kit"
            tar -xJf "$kit_source" -C "$kit" || die "$kit_source cannot be unpacked"
            echo "$stamp" >"$kit/.unpacked"
        fi
    fi
    [[ -f $kit/toolchain.cmake ]] || die "$kit holds no toolchain.cmake: it is not a Windows kit"
    export KESTRANO_WINDOWS_KIT_DIR=$kit
}

windows_path() {
    local path=${1//\//\\}
    printf 'Z:%s' "$path"
}

# ---- Wine ------------------------------------------------------------------------------------------------------------

# All prefixes lie here: the template, which Wine makes once, and the copies in which programs run. Nothing of the user's
# is read or written.
wine_folder=$root/build-windows/wine

# How many tests run under Wine at a time, each in a prefix that no other uses meanwhile.
wine_workers=${KESTRANO_WINE_WORKERS:-$(($(nproc) + 1))}

set_wine_environment() {
    export WINEDEBUG=-all WINEARCH=win64 WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
    WINEPATH="$(windows_path "$kit/qt/bin");$(windows_path "$kit/obs/bin");$(windows_path "$kit/extra/bin")"
    QT_PLUGIN_PATH=$(windows_path "$kit/qt/plugins")
    export WINEPATH QT_PLUGIN_PATH
}

make_wine_template() {
    set_wine_environment
    [[ ! -f $wine_folder/template/prepared ]] || return 0
    local log=$wine_folder/template.log
    export WINEPREFIX=$wine_folder/template
    say "Making a Wine prefix ($WINEPREFIX)"
    rm -rf "$WINEPREFIX"
    mkdir -p "$wine_folder"
    {
        timeout 300 env -u DISPLAY wineboot --init &&
            timeout 60 wine reg add 'HKCU\Software\Wine' /v Version /d win10 /f &&
            timeout 60 wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d false /f &&
            timeout 60 wineserver -w
    } >"$log" 2>&1 </dev/null || {
        tail -n 20 "$log" >&2
        die "Wine's prefix could not be made"
    }
    keep_user_folders
    touch "$WINEPREFIX/prepared"
}

# use_new_wine_prefix <name>: a copy of the template. What nobody writes to, Windows itself, is the same files.
use_new_wine_prefix() {
    [[ -f $wine_folder/template/prepared ]] || die "there is no Wine prefix; tools/test-windows makes it"
    export WINEPREFIX=$wine_folder/$1
    end_wine
    rm -rf "$WINEPREFIX"
    cp -al "$wine_folder/template" "$WINEPREFIX"
    cp -a --remove-destination "$wine_folder"/template/*.reg "$WINEPREFIX"
    rm -rf "$WINEPREFIX/drive_c/users"
    cp -a "$wine_folder/template/drive_c/users" "$WINEPREFIX/drive_c/users"
}

# Leaves in WINEPREFIX the folder of a prefix that is this process's until it ends, with all to whom it hands $wine_lock.
# Whether there is a prefix is for the caller to see.
take_wine_worker() {
    local number
    while true; do
        for ((number = 1; number <= wine_workers; ++number)); do
            exec {wine_lock}>"$wine_folder/worker-$number.lock"
            ! flock -n "$wine_lock" || break 2
            exec {wine_lock}>&-
        done
        sleep 0.2
    done
    export WINEPREFIX=$wine_folder/worker-$number
}

# Nothing of the prefix keeps running.
end_wine() {
    [[ -d ${WINEPREFIX:-} ]] || return 0
    timeout 20 wineserver -k >/dev/null 2>&1 || true
    timeout 20 wineserver -w >/dev/null 2>&1 || true
}

# The same for all prefixes, and again when the command ends.
end_wine_workers() {
    local folder
    for folder in "$wine_folder"/*/; do
        [[ ! -f $folder/system.reg ]] || WINEPREFIX=${folder%/} end_wine
    done
}

clear_wine_workers() {
    trap end_wine_workers EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    end_wine_workers
    rm -rf "$wine_folder"/worker-*
}

# Wine makes the folders for documents, videos and the like links into the home of whoever runs it.
keep_user_folders() {
    local link
    find "$WINEPREFIX/drive_c/users" -mindepth 2 -maxdepth 2 -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

# use_opengl <folder of a program>: Wine has no Direct3D 11 that libobs could use. The OpenGL module has the same interface
# and replaces it in builds laid out for Wine only.
use_opengl() {
    rm -f "$1/libobs-d3d11.dll"
    cp "$kit/obs/bin/libobs-opengl.dll" "$1/libobs-d3d11.dll"
}
