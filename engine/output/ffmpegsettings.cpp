// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/ffmpegsettings.h"

#include <array>
#include <optional>

namespace {

// FFmpeg's codec identifiers.
constexpr int kCodecMpeg4 = 12;
constexpr int kCodecFlv1 = 21;
constexpr int kCodecH264 = 27;
constexpr int kCodecPng = 61;
constexpr int kCodecGif = 97;
constexpr int kCodecMp3 = 86017;
constexpr int kCodecAac = 86018;
constexpr int kCodecFlac = 86028;

constexpr int kAudioBitRateKbit = 192;
constexpr int kSecondsBetweenKeyFrames = 10;
// MP3 and FLAC get a token video, as small and cheap as can be.
constexpr int kTokenVideoSizePx = 2;
constexpr int kTokenVideoBitRate = 1024;

enum class Video
{
    None,
    Token,
    Full
};

struct FormatRow
{
    const char* name = nullptr;
    const char* mimeType = nullptr;
    Video size = Video::None;
    std::optional<bool> video;
    const char* videoEncoder = nullptr;
    std::optional<int> videoEncoderId;
    std::optional<bool> audio;
    const char* audioEncoder = nullptr;
    std::optional<int> audioEncoderId;
};

constexpr std::array<FormatRow, kRecordingFormatCount> kRows{{
    {"mp4", "video/mp4", Video::Full, true, "libx264", kCodecH264, {}, "aac", kCodecAac},
    {"avi", "video/avi", Video::Full, true, "mpeg4", kCodecMpeg4, {}, "libmp3lame", kCodecMp3},
    {"flv", "video/flv", Video::Full, true, "flv", kCodecFlv1, {}, "libmp3lame", kCodecMp3},
    {"gif", "video/gif", Video::Full, true, "gif", kCodecGif, false, "none", {}},
    {"mp3", "audio/mpeg", Video::Token, {}, "png", kCodecPng, {}, "libmp3lame", kCodecMp3},
    {"aac", "audio/aac", Video::None, false, "none", {}, {}, "aac", kCodecAac},
    {"flac", "audio/flac", Video::Token, {}, "png", kCodecPng, {}, "flac", kCodecFlac},
}};

const FormatRow& rowOf(RecordingFormat format)
{
    return kRows.at(static_cast<std::size_t>(format));
}

void setVideoSize(obs_data_t* settings, int widthPx, int heightPx, int bitRate)
{
    obs_data_set_int(settings, "video_bitrate", bitRate);
    obs_data_set_int(settings, "scale_width", widthPx);
    obs_data_set_int(settings, "scale_height", heightPx);
}

void setVideo(obs_data_t* settings, const FormatRow& row, const FfmpegRequest& request)
{
    if (row.size == Video::Full) {
        obs_data_set_int(settings, "gop_size", static_cast<long long>(request.fps) * kSecondsBetweenKeyFrames);
        setVideoSize(settings, request.widthPx, request.heightPx, request.bitRate * 1024);
    } else if (row.size == Video::Token) {
        setVideoSize(settings, kTokenVideoSizePx, kTokenVideoSizePx, kTokenVideoBitRate);
    }
    if (row.video)
        obs_data_set_bool(settings, "video", *row.video);
    obs_data_set_string(settings, "video_encoder", row.videoEncoder);
    if (row.videoEncoderId)
        obs_data_set_int(settings, "video_encoder_id", *row.videoEncoderId);
}

void setAudio(obs_data_t* settings, const FormatRow& row)
{
    if (row.audio)
        obs_data_set_bool(settings, "audio", *row.audio);
    obs_data_set_string(settings, "audio_encoder", row.audioEncoder);
    if (!row.audioEncoderId)
        return;
    obs_data_set_int(settings, "audio_bitrate", kAudioBitRateKbit);
    obs_data_set_int(settings, "audio_encoder_id", *row.audioEncoderId);
}

} // namespace

int evenSize(int sizePx)
{
    return sizePx > 0 && sizePx % 2 != 0 ? sizePx + 1 : sizePx;
}

QString recordingFormatName(RecordingFormat format)
{
    return recordingFileExtension(format).toUpper();
}

QString recordingUrl(const QString& storePath, RecordingFormat format)
{
    return storePath + QLatin1Char('.') + recordingFileExtension(format);
}

ObsDataHandle buildFfmpegSettings(RecordingFormat format, const FfmpegRequest& request)
{
    const FormatRow& row = rowOf(format);
    ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), "url", recordingUrl(request.storePath, format).toUtf8().constData());
    obs_data_set_string(settings.get(), "format_name", row.name);
    obs_data_set_string(settings.get(), "format_mime_type", row.mimeType);
    obs_data_set_string(settings.get(), "muxer_settings", nullptr);
    setVideo(settings.get(), row, request);
    setAudio(settings.get(), row);
    return settings;
}

video_scale_info engineVideoConversion()
{
    video_scale_info conversion{};
    obs_video_info engine{};
    if (!obs_get_video_info(&engine))
        return conversion;
    conversion.format = engine.output_format;
    conversion.width = engine.output_width;
    conversion.height = engine.output_height;
    conversion.range = engine.range;
    conversion.colorspace = engine.colorspace;
    return conversion;
}

video_scale_info videoConversionFor(RecordingFormat format)
{
    video_scale_info conversion = engineVideoConversion();
    switch (format) {
    case RecordingFormat::Avi:
    case RecordingFormat::Flv:
        conversion.range = VIDEO_RANGE_PARTIAL;
        break;
    case RecordingFormat::Gif:
        conversion.range = VIDEO_RANGE_PARTIAL;
        conversion.colorspace = VIDEO_CS_601;
        break;
    case RecordingFormat::Mp4:
    case RecordingFormat::Mp3:
    case RecordingFormat::Aac:
    case RecordingFormat::Flac:
        break;
    }
    return conversion;
}
