// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/recordingformat.h"

#include <array>

namespace {

using namespace codecid;
using enum VideoKind;
using enum VideoColours;

constexpr std::array<RecordingFormatTraits, kRecordingFormatCount> kFormats{{
    {"mp4", "mp4", "video/mp4", Full, OfEngine, {true, "libx264", kH264}, {{}, "aac", kAac}},
    {"avi", "avi", "video/avi", Full, LimitedRange, {true, "mpeg4", kMpeg4}, {{}, "libmp3lame", kMp3}},
    {"flv", "flv", "video/flv", Full, LimitedRange, {true, "flv", kFlv1}, {{}, "libmp3lame", kMp3}},
    {"gif", "gif", "video/gif", Full, LimitedBt601, {true, "gif", kGif}, {false, "none", {}}},
    {"mp3", "mp3", "audio/mpeg", Token, OfEngine, {{}, "png", kPng}, {{}, "libmp3lame", kMp3}},
    {"aac", "aac", "audio/aac", NoVideo, OfEngine, {false, "none", {}}, {{}, "aac", kAac}},
    {"flac", "flac", "audio/flac", Token, OfEngine, {{}, "png", kPng}, {{}, "flac", kFlac}},
}};

} // namespace

RecordingFormat recordingFormatFromIndex(int index)
{
    return index >= 0 && index < kRecordingFormatCount ? static_cast<RecordingFormat>(index) : RecordingFormat::Mp4;
}

const RecordingFormatTraits& traitsOf(RecordingFormat format)
{
    return kFormats.at(static_cast<std::size_t>(format));
}

QString recordingFileExtension(RecordingFormat format)
{
    return QLatin1String(traitsOf(format).extension);
}

bool hasVideo(RecordingFormat format)
{
    return traitsOf(format).videoKind == VideoKind::Full;
}
