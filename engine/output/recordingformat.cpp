// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/recordingformat.h"

#include <array>

RecordingFormat recordingFormatFromIndex(int index)
{
    return index >= 0 && index < kRecordingFormatCount ? static_cast<RecordingFormat>(index) : RecordingFormat::Mp4;
}

QString recordingFileExtension(RecordingFormat format)
{
    static constexpr std::array<const char*, kRecordingFormatCount> kExtensions{"mp4", "avi", "flv", "gif",
                                                                                "mp3", "aac", "flac"};
    return QLatin1String(kExtensions.at(static_cast<std::size_t>(format)));
}

bool hasVideo(RecordingFormat format)
{
    return static_cast<int>(format) <= static_cast<int>(RecordingFormat::Gif);
}
