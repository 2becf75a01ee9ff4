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
// The container formats of MP3 and FLAC take a picture: a token one, as small and cheap as can be.
constexpr int kTokenPictureSizePx = 2;
constexpr int kTokenPictureBitRate = 1024;

enum class Picture
{
    None,
    Token,
    Full
};

struct FormatRow
{
    const char* name = nullptr;
    const char* mimeType = nullptr;
    Picture picture = Picture::None;
    std::optional<bool> video;
    const char* videoEncoder = nullptr;
    std::optional<int> videoEncoderId;
    std::optional<bool> audio;
    const char* audioEncoder = nullptr;
    std::optional<int> audioEncoderId;
};

constexpr std::array<FormatRow, kRecordingFormatCount> kRows{{
    {"mp4", "video/mp4", Picture::Full, true, "libx264", kCodecH264, {}, "aac", kCodecAac},
    {"avi", "video/avi", Picture::Full, true, "mpeg4", kCodecMpeg4, {}, "libmp3lame", kCodecMp3},
    {"flv", "video/flv", Picture::Full, true, "flv", kCodecFlv1, {}, "libmp3lame", kCodecMp3},
    {"gif", "video/gif", Picture::Full, true, "gif", kCodecGif, false, "none", {}},
    {"mp3", "audio/mpeg", Picture::Token, {}, "png", kCodecPng, {}, "libmp3lame", kCodecMp3},
    {"aac", "audio/aac", Picture::None, false, "none", {}, {}, "aac", kCodecAac},
    {"flac", "audio/flac", Picture::Token, {}, "png", kCodecPng, {}, "flac", kCodecFlac},
}};

const FormatRow& rowOf(RecordingFormat format)
{
    return kRows.at(static_cast<std::size_t>(format));
}

void setPictureSize(obs_data_t* settings, int widthPx, int heightPx, int bitRate)
{
    obs_data_set_int(settings, "video_bitrate", bitRate);
    obs_data_set_int(settings, "scale_width", widthPx);
    obs_data_set_int(settings, "scale_height", heightPx);
}

void setPicture(obs_data_t* settings, const FormatRow& row, const FfmpegRequest& request)
{
    if (row.picture == Picture::Full) {
        obs_data_set_int(settings, "gop_size", static_cast<long long>(request.fps) * kSecondsBetweenKeyFrames);
        setPictureSize(settings, request.widthPx, request.heightPx, request.bitRate * 1024);
    } else if (row.picture == Picture::Token) {
        setPictureSize(settings, kTokenPictureSizePx, kTokenPictureSizePx, kTokenPictureBitRate);
    }
    if (row.video)
        obs_data_set_bool(settings, "video", *row.video);
    obs_data_set_string(settings, "video_encoder", row.videoEncoder);
    if (row.videoEncoderId)
        obs_data_set_int(settings, "video_encoder_id", *row.videoEncoderId);
}

void setSound(obs_data_t* settings, const FormatRow& row)
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
    setPicture(settings.get(), row, request);
    setSound(settings.get(), row);
    return settings;
}

video_scale_info enginePictureForm()
{
    video_scale_info form{};
    obs_video_info engine{};
    if (!obs_get_video_info(&engine))
        return form;
    form.format = engine.output_format;
    form.width = engine.output_width;
    form.height = engine.output_height;
    form.range = engine.range;
    form.colorspace = engine.colorspace;
    return form;
}

video_scale_info pictureFormFor(RecordingFormat format)
{
    video_scale_info form = enginePictureForm();
    switch (format) {
    case RecordingFormat::Avi:
    case RecordingFormat::Flv:
        form.range = VIDEO_RANGE_PARTIAL;
        break;
    case RecordingFormat::Gif:
        form.range = VIDEO_RANGE_PARTIAL;
        form.colorspace = VIDEO_CS_601;
        break;
    case RecordingFormat::Mp4:
    case RecordingFormat::Mp3:
    case RecordingFormat::Aac:
    case RecordingFormat::Flac:
        break;
    }
    return form;
}
