# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2034 # what is set here is used by the commands
# What the commands in tools/ share: where the project is, how they speak, how they configure and build.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
command_name=${0##*/}
started_at=$SECONDS

# A step of the work, in one line.
say() {
    printf '==> %s\n' "$*"
}

# Ends the command with the reason.
die() {
    printf '\n%s: %s\n' "$command_name" "$*" >&2
    exit 1
}

minutes() {
    printf '%d min %02d s' "$(($1 / 60))" "$(($1 % 60))"
}

# logged <log file> <command>...: what the command says goes to the terminal when there is one, else to the log, whose
# end is shown when the command fails.
logged() {
    local log=$1 status=0
    shift
    mkdir -p "$(dirname "$log")"
    if [[ -t 1 ]]; then
        "$@" || status=$?
        return $status
    fi
    "$@" >"$log" 2>&1 || status=$?
    if ((status != 0)); then
        echo "    ... the end of $log:"
        tail -n 60 "$log" | sed 's/^/    /'
    fi
    return $status
}

# configure_preset <preset> <folder>
configure_preset() {
    cd "$root" || die "cannot enter $root"
    say "Configuring (preset $1, folder $2)"
    logged "$2/logs/configure.log" cmake --preset "$1" || die "configuring failed; the reason stands above"
}

# Configures a folder that is not configured, or whose CMake files have changed.
configure_preset_once() {
    if [[ -f $root/$2/build.ninja && -f $root/$2/test-targets.txt ]]; then
        logged "$root/$2/logs/configure.log" ninja -C "$root/$2" build.ninja ||
            die "configuring failed; the reason stands above"
    else
        configure_preset "$1" "$2"
    fi
}

# build_targets <preset> <folder> [target]...
build_targets() {
    local preset=$1 folder=$2 begun=$SECONDS targets=()
    shift 2
    (($# == 0)) || targets=(--target "$@")
    cd "$root" || die "cannot enter $root"
    local what=${*:-all}
    (($# <= 5)) || what="$# targets"
    say "Building $what"
    logged "$folder/logs/build.log" cmake --build --preset "$preset" -j "$(nproc)" "${targets[@]}" ||
        die "the build failed; the reason stands above"
    say "Built in $(minutes $((SECONDS - begun)))"
}

# build_preset <preset> <folder> [target]...: configures and builds one preset of CMakePresets.json.
build_preset() {
    configure_preset "$1" "$2"
    build_targets "$@"
}

# second_tries <log>: the tests that needed a second try: those with a failure and a success in ctest's
# output.
second_tries() {
    awk '/Test +#[0-9]+: / { name = $0; sub(/.*Test +#[0-9]+: /, "", name); sub(/ .*/, "", name)
             if (/\*\*\*/) failed[name] = 1; else if (/ Passed /) passed[name] = 1 }
         END { for (name in failed) if (name in passed) print "    " name }' "$1"
}
