// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/ffmpegsettings.h"
#include "tests/support/testrun.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace {

QJsonObject settingsOf(RecordingFormat format)
{
    const FfmpegRequest request{QStringLiteral("/videos/holiday"), 1280, 720, 30, 4};
    const ObsDataHandle settings = buildFfmpegSettings(format, request);
    return QJsonDocument::fromJson(obs_data_get_json(settings.get())).object();
}

QJsonObject withVideo(QJsonObject settings, const char* encoder, int encoderId)
{
    settings["gop_size"] = 300;
    settings["video"] = true;
    settings["video_bitrate"] = 4096;
    settings["video_encoder"] = encoder;
    settings["video_encoder_id"] = encoderId;
    settings["scale_width"] = 1280;
    settings["scale_height"] = 720;
    return settings;
}

QJsonObject withTokenVideo(QJsonObject settings)
{
    settings["video_bitrate"] = 1024;
    settings["video_encoder"] = "png";
    settings["video_encoder_id"] = 61;
    settings["scale_width"] = 2;
    settings["scale_height"] = 2;
    return settings;
}

QJsonObject withAudio(QJsonObject settings, const char* encoder, int encoderId)
{
    settings["audio_bitrate"] = 192;
    settings["audio_encoder"] = encoder;
    settings["audio_encoder_id"] = encoderId;
    return settings;
}

QJsonObject container(const char* name, const char* mimeType)
{
    return {{"url", QLatin1String("/videos/holiday.") + QLatin1String(name)},
            {"format_name", name},
            {"format_mime_type", mimeType},
            {"muxer_settings", "flush_packets=1"}};
}

} // namespace

/// The whole object is compared: a key too many fails as well as one too few.
class TestFfmpegSettings : public QObject
{
    Q_OBJECT

private slots:
    void mp4()
    {
        QJsonObject expected = withAudio(withVideo(container("mp4", "video/mp4"), "libx264", 27), "aac", 86018);
        expected["muxer_settings"] = "flush_packets=1 frag_duration=1000000 "
                                     "movflags=+frag_keyframe+empty_moov+default_base_moof";
        QCOMPARE(settingsOf(RecordingFormat::Mp4), expected);
    }

    void mp4IsMadePlainByTheMuxerWhereThatCan()
    {
        QCOMPARE(muxerOptions(RecordingFormat::Mp4, true),
                 QByteArray("flush_packets=1 frag_duration=1000000 movflags=+hybrid_fragmented"));
        QCOMPARE(muxerOptions(RecordingFormat::Flac, true), QByteArray("flush_packets=1"));
    }

    void avi()
    {
        QCOMPARE(settingsOf(RecordingFormat::Avi),
                 withAudio(withVideo(container("avi", "video/avi"), "mpeg4", 12), "libmp3lame", 86017));
    }

    void flv()
    {
        QCOMPARE(settingsOf(RecordingFormat::Flv),
                 withAudio(withVideo(container("flv", "video/flv"), "flv", 21), "libmp3lame", 86017));
    }

    void gifCarriesNoAudioKeysButAudioFalseAndAudioEncoderNone()
    {
        QJsonObject expected = withVideo(container("gif", "video/gif"), "gif", 97);
        expected["audio"] = false;
        expected["audio_encoder"] = "none";
        QCOMPARE(settingsOf(RecordingFormat::Gif), expected);
    }

    void mp3NamesATokenVideo()
    {
        QCOMPARE(settingsOf(RecordingFormat::Mp3),
                 withAudio(withTokenVideo(container("mp3", "audio/mpeg")), "libmp3lame", 86017));
    }

    void aac()
    {
        QJsonObject expected = withAudio(container("aac", "audio/aac"), "aac", 86018);
        expected["video"] = false;
        expected["video_encoder"] = "none";
        QCOMPARE(settingsOf(RecordingFormat::Aac), expected);
    }

    void flacNamesATokenVideo()
    {
        QCOMPARE(settingsOf(RecordingFormat::Flac),
                 withAudio(withTokenVideo(container("flac", "audio/flac")), "flac", 86028));
    }

    void oddSizesGrowByOne()
    {
        QCOMPARE(evenSize(1279), 1280);
        QCOMPARE(evenSize(719), 720);
        QCOMPARE(evenSize(1), 2);
    }

    void evenZeroAndNegativeSizesStay()
    {
        QCOMPARE(evenSize(1280), 1280);
        QCOMPARE(evenSize(0), 0);
        QCOMPARE(evenSize(-1), -1);
        QCOMPARE(evenSize(-3), -3);
    }

    void pathOutsideAsciiIsUtf8()
    {
        const FfmpegRequest request{QStringLiteral("/vidéos/日本"), 2, 2, 30, 4};
        const ObsDataHandle settings = buildFfmpegSettings(RecordingFormat::Mp4, request);
        QCOMPARE(QString::fromUtf8(obs_data_get_string(settings.get(), "url")), QStringLiteral("/vidéos/日本.mp4"));
    }
};

REGISTER_TEST(testrun::core<TestFfmpegSettings>);
#include "test_ffmpegsettings.moc"
