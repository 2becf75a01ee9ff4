// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/ffmpegsettings.h"

#include "engine/core/rawvideo.h"

namespace {

constexpr int kSecondsBetweenKeyFrames = 10;
constexpr int kTokenVideoSizePx = 2;
constexpr int kTokenVideoBitRate = 1024;

void setVideoSize(obs_data_t* settings, int widthPx, int heightPx, int bitRate)
{
    obs_data_set_int(settings, "video_bitrate", bitRate);
    obs_data_set_int(settings, "scale_width", widthPx);
    obs_data_set_int(settings, "scale_height", heightPx);
}

void setVideo(obs_data_t* settings, const RecordingFormatTraits& format, const FfmpegRequest& request)
{
    if (format.videoKind == VideoKind::Full) {
        obs_data_set_int(settings, "gop_size", static_cast<long long>(request.fps) * kSecondsBetweenKeyFrames);
        setVideoSize(settings, request.widthPx, request.heightPx, request.bitRate * 1024);
    } else if (format.videoKind == VideoKind::Token) {
        setVideoSize(settings, kTokenVideoSizePx, kTokenVideoSizePx, kTokenVideoBitRate);
    }
    if (format.video.isOn)
        obs_data_set_bool(settings, "video", *format.video.isOn);
    obs_data_set_string(settings, "video_encoder", format.video.encoder);
    if (format.video.encoderId)
        obs_data_set_int(settings, "video_encoder_id", *format.video.encoderId);
}

void setAudio(obs_data_t* settings, const RecordingFormatTraits& format)
{
    if (format.audio.isOn)
        obs_data_set_bool(settings, "audio", *format.audio.isOn);
    obs_data_set_string(settings, "audio_encoder", format.audio.encoder);
    if (!format.audio.encoderId)
        return;
    obs_data_set_int(settings, "audio_bitrate", kAudioBitRateKbit);
    obs_data_set_int(settings, "audio_encoder_id", *format.audio.encoderId);
}

} // namespace

int evenSize(int sizePx)
{
    return sizePx > 0 && sizePx % 2 != 0 ? sizePx + 1 : sizePx;
}

QByteArray muxerOptions(RecordingFormat format, bool isHybridMp4)
{
    QByteArray options = "flush_packets=1";
    if (format == RecordingFormat::Mp4) {
        options += " frag_duration=1000000 movflags=";
        options += isHybridMp4 ? "+hybrid_fragmented" : "+frag_keyframe+empty_moov+default_base_moof";
    }
    return options;
}

QString recordingUrl(const QString& storePath, RecordingFormat format)
{
    return storePath + QLatin1Char('.') + recordingFileExtension(format);
}

ObsDataHandle buildFfmpegSettings(RecordingFormat format, const FfmpegRequest& request)
{
    const RecordingFormatTraits& traits = traitsOf(format);
    ObsDataHandle settings(obs_data_create());
    obs_data_set_string(settings.get(), "url", recordingUrl(request.storePath, format).toUtf8().constData());
    obs_data_set_string(settings.get(), "format_name", traits.muxer);
    obs_data_set_string(settings.get(), "format_mime_type", traits.mimeType);
    obs_data_set_string(settings.get(), "muxer_settings", muxerOptions(format, request.isHybridMp4).constData());
    setVideo(settings.get(), traits, request);
    setAudio(settings.get(), traits);
    return settings;
}

video_scale_info videoConversionFor(RecordingFormat format, const video_output* video)
{
    video_scale_info conversion = conversionOf(video);
    const VideoColours colours = traitsOf(format).colours;
    if (colours != VideoColours::OfEngine)
        conversion.range = VIDEO_RANGE_PARTIAL;
    if (colours == VideoColours::LimitedBt601)
        conversion.colorspace = VIDEO_CS_601;
    return conversion;
}
