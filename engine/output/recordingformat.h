// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The formats a recording can have; the values are the positions in every list of formats and the engine's format
/// argument.
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

/// The format at a list position. Any value outside 0..6 is MP4.
RecordingFormat recordingFormatFromIndex(int index);

/// Lower-case extension without the dot, for example "mp4".
QString recordingFileExtension(RecordingFormat format);

/// Whether the format holds video (MP4, AVI, FLV, GIF); the others are audio only.
bool hasVideo(RecordingFormat format);
