# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2154 # root comes from common.sh
# Looks at what a Linux desktop reads of an installation: desktop entry, AppStream metainfo, man page.

# package_languages: those of locales/ besides English, as a desktop entry names them.
package_languages() {
    local file name
    for file in "$root"/locales/*.ini; do
        name=${file##*/}
        case ${name%.ini} in
            en_*) ;;
            zh_*) echo "${name%.ini}" ;;
            *_FR) echo fr ;;
            *) echo "${name%%_*}" ;;
        esac
    done
}

# count_of <text> <pattern>
count_of() {
    { grep -o "$2" <<<"$1" || true; } | wc -l
}

# Nothing is translated of what has changed in a release.
check_package_languages() {
    local language key found wanted entry=$root/packaging/linux/kestrano.desktop metainfo
    metainfo=$(sed '/<releases>/,/<\/releases>/d' "$1")
    for language in $(package_languages); do
        for key in GenericName Comment Keywords; do
            grep -q "^${key}\[$language\]=." "$entry" || die "the desktop entry has no $key for $language"
        done
        for key in summary p li caption; do
            found=$(count_of "$metainfo" "<$key xml:lang=\"${language/_/-}\">")
            wanted=$(count_of "$metainfo" "<$key>")
            [[ $found == "$wanted" ]] || die "the metainfo has $found instead of $wanted <$key> for $language"
        done
        # As many as the language has words.
        [[ $metainfo == *"<keyword xml:lang=\"${language/_/-}\">"* ]] || die "the metainfo has no <keyword> for $language"
    done
}

# lint_package_texts <build folder>: in which CMake has made them.
lint_package_texts() {
    local metainfo=$1/generated/kestrano.metainfo.xml remarks
    desktop-file-validate "$root/packaging/linux/kestrano.desktop" || die "the desktop entry is not right"
    appstreamcli validate --no-net "$metainfo" || die "the metainfo is not right"
    check_package_languages "$metainfo"
    remarks=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$1/generated/kestrano.1" 2>&1 >/dev/null)
    [[ -z $remarks ]] || die "the man page: $remarks"
}
