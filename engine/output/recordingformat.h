// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QString>

#include <optional>

/// The values are the indices in every list of formats, and the engine's format argument.
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

inline constexpr int kAudioBitRateKbit = 192;

/// FFmpeg's codec identifiers.
namespace codecid {
inline constexpr int kMpeg4 = 12;
inline constexpr int kFlv1 = 21;
inline constexpr int kH264 = 27;
inline constexpr int kPng = 61;
inline constexpr int kGif = 97;
inline constexpr int kMp3 = 86017;
inline constexpr int kAac = 86018;
inline constexpr int kFlac = 86028;
} // namespace codecid

enum class VideoKind
{
    NoVideo,
    /// As small and cheap as can be. libobs opens a video stream wherever the muxer has a default video encoder, and
    /// MP3 and FLAC have one for cover images.
    Token,
    /// The recorded screen.
    Full
};

/// What the colours of the encoded video are, where the file does not say.
enum class VideoColours
{
    /// The file says it: the engine's own.
    OfEngine,
    /// Players take the range for limited.
    LimitedRange,
    /// The output makes the colours as if from limited BT.601.
    LimitedBt601
};

/// What the output is given for one stream; what is not set is not given.
struct StreamTraits
{
    /// The key "video" or "audio".
    std::optional<bool> isOn;
    const char* encoder = nullptr;
    std::optional<int> encoderId;
};

/// What a format's file is made of.
struct RecordingFormatTraits
{
    /// Lower-case, without the dot.
    const char* extension = nullptr;
    /// "aac" is none of FFmpeg's muxers: the output goes by the extension then.
    const char* muxer = nullptr;
    const char* mimeType = nullptr;
    VideoKind videoKind = VideoKind::NoVideo;
    VideoColours colours = VideoColours::OfEngine;
    StreamTraits video;
    StreamTraits audio;
};

/// MP4 for any index outside the table.
RecordingFormat recordingFormatFromIndex(int index);

const RecordingFormatTraits& traitsOf(RecordingFormat format);

QString recordingFileExtension(RecordingFormat format);

/// About what the file of a recording grows by, from the bit rates of its encoders. FLAC and GIF have none: as much as
/// audio that is not encoded, and as a screen with some motion makes.
///
/// @param bitRate as ObsWrapper::setupFFmpeg() gets it
qint64 nominalBytesPerSecond(RecordingFormat format, const QSize& sizePx, int fps, int bitRate);

/// Of the screen; formats without are audio only.
bool hasVideo(RecordingFormat format);
