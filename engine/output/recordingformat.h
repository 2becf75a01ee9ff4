// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The values are list positions and the engine's format argument.
enum class RecordingFormat : int
{
    Mp4 = 0,
    Avi = 1,
    Flv = 2,
    Gif = 3,
    Mp3 = 4,
    Aac = 5,
    Flac = 6
};

inline constexpr int kRecordingFormatCount = 7;

/// MP4 for any other value.
RecordingFormat recordingFormatFromIndex(int index);

/// Lower case, without dot.
QString recordingFileExtension(RecordingFormat format);

/// MP4, AVI, FLV and GIF; the others are audio only.
bool hasVideo(RecordingFormat format);
