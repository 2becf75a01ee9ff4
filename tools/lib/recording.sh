# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# Facts about a recording of the test pattern (tools/lib/test-pattern.tcl), in words.

readonly kCounterBits=16

# probe <file> <v|a> <entry>...: the values of the first such stream, a line each; nothing when there is no such stream.
probe() {
    local file=$1 kind=$2 entries=$3
    ffprobe -v error -select_streams "$kind:0" -show_entries "$entries" -of default=noprint_wrappers=1:nokey=1 "$file"
}

# Whether the file is finished: an MP4 without its index at the end cannot be opened.
is_complete() {
    [[ -s $1 ]] && ffprobe -v error -show_entries format=duration "$1" >/dev/null 2>&1
}

# The number in the strip of each frame, a line each.
frame_numbers() {
    local width=$2 block
    block=$((width / kCounterBits))
    ffmpeg -v error -nostdin -i "$1" -map 0:v:0 -fps_mode passthrough \
        -vf "crop=$((block * kCounterBits)):$block:0:0,format=gray,scale=$kCounterBits:1:flags=area" -f rawvideo - |
        od -An -v -tu1 -w$kCounterBits |
        awk '{ number = 0; for (i = 1; i <= NF; i++) number = number * 2 + ($i > 127); print number }'
}

# "captured expected": how many different numbers the file holds, of how many the pattern showed meanwhile.
captured_numbers() {
    frame_numbers "$1" "$2" | sort -n | uniq |
        awk 'NR == 1 { first = $1 } { last = $1 } END { print NR, NR ? last - first + 1 : 0 }'
}

mean_sound_level() {
    ffmpeg -nostdin -hide_banner -i "$1" -map 0:a:0 -af volumedetect -f null - 2>&1 |
        sed -n 's/.*mean_volume: \(.*\)/\1/p'
}

describe_recording() {
    local file=$1 video audio captured expected
    mapfile -t video < <(probe "$file" v stream=codec_name,width,height,avg_frame_rate)
    mapfile -t audio < <(probe "$file" a stream=codec_name,sample_rate,channels)
    ((${#video[@]} >= 4)) || die "$file holds no video"
    ((${#audio[@]} >= 3)) || die "$file holds no audio"
    read -r captured expected < <(captured_numbers "$file" "${video[1]}")
    ((expected > 0)) || die "$file holds no frame"
    printf '    File      %s\n' "$file"
    printf '    Size      %s\n' "$(du -h --apparent-size "$file" | cut -f1)B"
    printf '    Duration  %.2f s\n' "$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$file")"
    printf '    Video     %s, %sx%s, %s frames a second\n' "${video[0]}" "${video[1]}" "${video[2]}" \
        "$(awk -F/ '{ printf "%.2f", $1 / ($2 ? $2 : 1) }' <<<"${video[3]}")"
    printf '    Captured  %.1f %% of the frames that the screen showed (%d of %d)\n' \
        "$(awk "BEGIN { print 100 * $captured / $expected }")" "$captured" "$expected"
    printf '    Sound     %s, %s Hz, %s channels, mean level %s\n' "${audio[0]}" "${audio[1]}" "${audio[2]}" \
        "$(mean_sound_level "$file")"
}
