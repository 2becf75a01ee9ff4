# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# shellcheck disable=SC2154 # who sources this sets program, what starts it, and seconds, how long it records
# The program on a private desktop, used through its window and its recording hotkey. Sourced after common.sh and
# recording.sh.

output=$TMPDIR/program-output

log_file() {
    find "$XDG_DATA_HOME" -path '*/logs/vexmoor_*.log' 2>/dev/null | sort | tail -n 1
}

# Ends with the reason, what the program logged and what it wrote to its terminal.
fail() {
    local log
    log=$(log_file)
    echo "---- the end of the program's log ${log:-(there is none)}" >&2
    [[ -z $log ]] || tail -n 40 "$log" >&2
    echo "---- the end of the program's output" >&2
    tail -n 20 "$output" >&2
    die "$*"
}

is_logged() {
    local log
    log=$(log_file)
    [[ -n $log ]] && grep -qF -- "$1" "$log"
}

# wait_until <seconds> <what it waits for> <test>...
wait_until() {
    local limit=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        kill -0 "$program_pid" 2>/dev/null || fail "the program ended while waiting for $what"
        ((SECONDS < limit)) || fail "waited in vain for $what"
        sleep 0.1
    done
}

# The program's own settings file: all defaults, but no page of the maker opens. The recording goes where the program
# puts it by itself, which is a folder that goes with the desktop.
write_settings() {
    mkdir -p "$XDG_CONFIG_HOME/Tolvaran"
    printf '[general]\nfirstRun=false\n' >"$XDG_CONFIG_HOME/Tolvaran/Kestrano.conf"
}

start_program() {
    say "Starting the program"
    "$program" >"$output" 2>&1 &
    program_pid=$!
    wait_until 60 "the engine to start" is_logged "OBS initialized successfully"
}

press_recording_hotkey() {
    xdotool key F9
}

# Leaves the file in `file`.
record() {
    say "Pressing F9: the countdown runs"
    press_recording_hotkey
    wait_until 30 "the recording to start" is_logged "Recording started..."
    say "Recording for $seconds s"
    sleep "$seconds"
    say "Pressing F9 again"
    press_recording_hotkey
    wait_until 30 "the recording to stop" is_logged "Recording stopped..."
    file=$(sed -n 's/.*Starting recording to file: //p' "$(log_file)" | tail -n 1).mp4
    wait_until 30 "$file to be complete" is_complete "$file"
}

end_program() {
    local status=0
    wmctrl -c Kestrano || fail "the program's window cannot be closed"
    for ((i = 0; i < 150; i++)); do
        kill -0 "$program_pid" 2>/dev/null || break
        sleep 0.1
    done
    kill -0 "$program_pid" 2>/dev/null && fail "the program does not end after its window was closed"
    wait "$program_pid" || status=$?
    ((status == 0)) || fail "the program ended with status $status"
}
