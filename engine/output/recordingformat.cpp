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

constexpr qint64 kPcmBytesPerSecond = qint64{48'000} * 2 * 2;
/// Of FFmpeg's testsrc2. A desktop takes a tenth of it, a film ten times as much.
constexpr double kGifBytesPerPixel = 0.05;

qint64 videoBytesPerSecond(const RecordingFormatTraits& format, const QSize& sizePx, int fps, int bitRate)
{
    if (format.videoKind != Full)
        return 0;
    const double pixels = static_cast<double>(sizePx.width()) * sizePx.height() * fps;
    return format.video.encoderId == kGif ? qRound64(pixels * kGifBytesPerPixel) : qint64{bitRate} * 1024 * 1000 / 8;
}

qint64 audioBytesPerSecond(const RecordingFormatTraits& format)
{
    if (!format.audio.encoderId)
        return 0;
    return format.audio.encoderId == kFlac ? kPcmBytesPerSecond : qint64{kAudioBitRateKbit} * 1000 / 8;
}

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

qint64 nominalBytesPerSecond(RecordingFormat format, const QSize& sizePx, int fps, int bitRate)
{
    const RecordingFormatTraits& traits = traitsOf(format);
    return videoBytesPerSecond(traits, sizePx, fps, bitRate) + audioBytesPerSecond(traits);
}

bool hasVideo(RecordingFormat format)
{
    return traitsOf(format).videoKind == VideoKind::Full;
}
