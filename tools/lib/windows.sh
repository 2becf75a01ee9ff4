# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the commands use what is set here; root comes from common.sh
# The Windows kit: where it comes from and where it is unpacked.

kit=$root/build-windows-kit

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

# name_wine_prefix [name]: a Wine of the tests' own; nothing of the user's is read or written.
name_wine_prefix() {
    export WINEPREFIX=$root/build-windows/wine/${1:-prefix}
    export WINEDEBUG=-all WINEARCH=win64 WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
    WINEPATH="$(windows_path "$kit/qt/bin");$(windows_path "$kit/obs/bin")"
    QT_PLUGIN_PATH=$(windows_path "$kit/qt/plugins")
    export WINEPATH QT_PLUGIN_PATH
}

# use_wine_prefix [name]: nothing of that Wine keeps running when the command ends.
use_wine_prefix() {
    name_wine_prefix "${1:-prefix}"
    trap end_wine EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

end_wine() {
    timeout 20 wineserver -k >/dev/null 2>&1 || true
    timeout 20 wineserver -w >/dev/null 2>&1 || true
}

prepare_wine_prefix() {
    [[ ! -f $WINEPREFIX/prepared ]] || return 0
    say "Making a Wine prefix ($WINEPREFIX)"
    rm -rf "$WINEPREFIX"
    mkdir -p "${WINEPREFIX%/*}"
    local log=$WINEPREFIX.log
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

# Wine makes the folders for documents, videos and the like links into the home of whoever runs it.
keep_user_folders() {
    local link
    find "$WINEPREFIX/drive_c/users" -mindepth 2 -maxdepth 2 -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

# use_opengl <folder of a program>: Wine has no Direct3D 11 that libobs could use. The OpenGL module has the same interface
# and takes its place, in copies of the program that exist for Wine only.
use_opengl() {
    rm -f "$1/libobs-d3d11.dll"
    cp "$kit/obs/bin/libobs-opengl.dll" "$1/libobs-d3d11.dll"
}
