// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/obswrapper.h"
#include "engine/output/ffmpegsettings.h"
#include "engine/output/hybridmp4.h"
#include "tests/engine/enginerecordingtest.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <util/platform.h>

#include <algorithm>
#include <memory>
#include <thread>

using standins::behaviour;

/// Recording, on the real core with a stand-in for the file output.
class TestEngineRecording : public EngineRecordingTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Before there is an engine at all.
        ObsWrapper wrapper(standins::platform());
        MessageCapture log;
        QVERIFY(!wrapper.createOutputMode());
        wrapper.setupFFmpeg(QStringLiteral("/tmp/x"), 320, 240, 30, 4, 0);
        QVERIFY(log.texts().contains("Failed to create ffmpeg_output!"));
        QVERIFY(log.texts().contains("Error: fileOutput is null!"));
        QCOMPARE(wrapper.startRecording(), -1);
        wrapper.refreshMicDevices();
        wrapper.refreshDesktopDevices();
        QCOMPARE(wrapper.micDeviceNames(), QStringList{"No Device"});
        QCOMPARE(wrapper.micDeviceIds(), QStringList{"default"});
        QCOMPARE(wrapper.desktopDeviceNames(), QStringList{"No Device"});
        QCOMPARE(wrapper.desktopDeviceIds(), QStringList{"default"});

        QVERIFY(standins::startCore());
        standins::registerSources();
        standins::registerOutputs();
    }

    void createOutputModeMakesOutputAndEncodersInOrder()
    {
        MessageCapture log;
        QVERIFY(m_wrapper->createOutputMode());
        QCOMPARE(obsspy::calls(),
                 (QStringList{
                     "obs_output_create ffmpeg_output adv_ffmpeg_output",
                     "obs_audio_encoder_create ffmpeg_aac adv_aac0 0", "obs_audio_encoder_create ffmpeg_aac adv_aac1 1",
                     "obs_audio_encoder_create ffmpeg_aac adv_aac2 2", "obs_audio_encoder_create ffmpeg_aac adv_aac3 3",
                     "obs_audio_encoder_create ffmpeg_aac adv_aac4 4", "obs_audio_encoder_create ffmpeg_aac adv_aac5 5",
                     "obs_audio_encoder_create ffmpeg_aac adv_stream_audio 0",
                     "obs_audio_encoder_create ffmpeg_aac adv_archive_audio 1"}));
        QCOMPARE(log.texts(QtDebugMsg),
                 (QStringList{"Creating output mode...", "Creating ffmpeg_output...",
                              "ffmpeg_output created successfully", "Stream audio encoder created successfully",
                              "Stream archive encoder created successfully", "Output mode created successfully"}));
    }

    void createOutputModeReplacesThePreviousOutput()
    {
        QVERIFY(m_wrapper->createOutputMode());
        QVERIFY(m_wrapper->createOutputMode());
        QCOMPARE(standins::countOf("create output"), 2);
        QCOMPARE(standins::countOf("destroy output"), 1);
    }

    void createOutputModeWithoutOutputFails()
    {
        obsspy::failAt(QStringLiteral("obs_output_create"));
        MessageCapture log;
        QVERIFY(!m_wrapper->createOutputMode());
        QCOMPARE(log.texts(QtDebugMsg).last(), QStringLiteral("Failed to create ffmpeg_output!"));
        QVERIFY(obsspy::calls().filter("obs_audio_encoder_create").isEmpty());
    }

    void createOutputModeWithoutATrackEncoderFails()
    {
        obsspy::failAt(QStringLiteral("obs_audio_encoder_create adv_aac3"));
        MessageCapture log;
        QVERIFY(!m_wrapper->createOutputMode());
        QCOMPARE(log.texts(QtDebugMsg).last(), QStringLiteral("Failed to create AAC encoder for track 3"));
        QCOMPARE(obsspy::calls().filter("obs_audio_encoder_create").size(), 4);
    }

    void createOutputModeOnlyLogsMissingMixEncoders()
    {
        obsspy::failAt(QStringLiteral("obs_audio_encoder_create adv_stream_audio"));
        {
            MessageCapture log;
            QVERIFY(m_wrapper->createOutputMode());
            QVERIFY(log.texts().contains("Failed to create stream audio encoder"));
        }
        obsspy::failAt(QStringLiteral("obs_audio_encoder_create adv_archive_audio"));
        MessageCapture log;
        QVERIFY(m_wrapper->createOutputMode());
        QVERIFY(log.texts().contains("Failed to create stream archive encoder"));
    }

    void setupWithoutOutputLogsAndReturns()
    {
        obsspy::failAt(QStringLiteral("obs_output_create"));
        MessageCapture log;
        setup(0);
        QCOMPARE(log.texts(QtDebugMsg).last(), QStringLiteral("Error: fileOutput is null!"));
        QVERIFY(!obsspy::calls().contains("obs_output_update"));
    }

    void setupGivesTheEncodersTheAudioThenConfiguresTheOutput()
    {
        setup(0);
        QStringList calls = obsspy::calls();
        calls.removeIf([](const QString& call) {
            return call.startsWith(QLatin1String("obs_audio_encoder_create")) ||
                   call.contains(QLatin1String("_release")) || call == QLatin1String("obs_add_raw_video_callback");
        });
        QCOMPARE(calls, (QStringList{
                            "obs_output_create ffmpeg_output adv_ffmpeg_output", "obs_encoder_set_audio adv_aac0",
                            "obs_encoder_set_audio adv_aac1", "obs_encoder_set_audio adv_aac2",
                            "obs_encoder_set_audio adv_aac3", "obs_encoder_set_audio adv_aac4",
                            "obs_encoder_set_audio adv_aac5", "obs_encoder_set_audio adv_stream_audio",
                            "obs_encoder_set_audio adv_archive_audio", "obs_output_set_mixer 1", "obs_output_update"}));
        QCOMPARE(obs_output_video(standins::currentOutput()), obs_get_video());
        QCOMPARE(obs_output_audio(standins::currentOutput()), obs_get_audio());
        QCOMPARE(obs_output_get_mixer(standins::currentOutput()), size_t(1));
    }

    void setupLogsItsSteps()
    {
        MessageCapture log;
        m_wrapper->setupFFmpeg(QStringLiteral("/videos/holiday"), 1279, 719, 30, 4, 0);
        const QStringList texts = log.texts(QtDebugMsg);
        QCOMPARE(texts.first(), QStringLiteral("Setting up FFmpeg..."));
        QCOMPARE(texts.mid(texts.size() - 4),
                 (QStringList{"set up ffpmeg with storePath:[/videos/holiday] srcWidth:[1279] srcHeight:[719] fps:[30] "
                              "bitRate:[4] format:[MP4]",
                              "Output file path (MP4): /videos/holiday.mp4", "Setting mixer and media...",
                              "FFmpeg setup completed"}));
    }

    void setupNamesThreeFormatsInItsDiagnosticLine_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pathLine");

        QTest::newRow("mp4") << 0 << "MP4"
                             << "Output file path (MP4): /r.mp4";
        QTest::newRow("avi") << 1 << "MP3"
                             << "Output file path (AVI): /r.avi";
        QTest::newRow("flv") << 2 << "MP3"
                             << "Output file path (FLV): /r.flv";
        QTest::newRow("gif") << 3 << "MP3"
                             << "Output file path (GIF): /r.gif";
        QTest::newRow("mp3") << 4 << "MP3"
                             << "Output file path (MP3): /r.mp3";
        QTest::newRow("aac") << 5 << "AAC"
                             << "Output file path (AAC): /r.aac";
        QTest::newRow("flac") << 6 << "MP3"
                              << "Output file path (FLAC): /r.flac";
        QTest::newRow("unknown") << 7 << "MP3"
                                 << "Output file path (MP4): /r.mp4";
    }

    void setupNamesThreeFormatsInItsDiagnosticLine()
    {
        QFETCH(const int, format);
        QFETCH(const QString, name);
        QFETCH(const QString, pathLine);
        MessageCapture log;
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, format);
        QVERIFY(!log.texts().filter(QStringLiteral("format:[%1]").arg(name)).isEmpty());
        QVERIFY(log.texts().contains(pathLine));
    }

    void outputSeesTheSettingsOfEveryFormat_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<QJsonObject>("expected");

        QTest::newRow("mp4") << 0 << video(audio(container("mp4", "video/mp4"), "aac", 86018), "libx264", 27);
        QTest::newRow("avi") << 1 << video(audio(container("avi", "video/avi"), "libmp3lame", 86017), "mpeg4", 12);
        QTest::newRow("flv") << 2 << video(audio(container("flv", "video/flv"), "libmp3lame", 86017), "flv", 21);
        QJsonObject gif = video(container("gif", "video/gif"), "gif", 97);
        gif["audio"] = false;
        gif["audio_encoder"] = "none";
        QTest::newRow("gif") << 3 << gif;
        QTest::newRow("mp3") << 4 << token(audio(container("mp3", "audio/mpeg"), "libmp3lame", 86017));
        QJsonObject aac = audio(container("aac", "audio/aac"), "aac", 86018);
        aac["video"] = false;
        aac["video_encoder"] = "none";
        QTest::newRow("aac") << 5 << aac;
        QTest::newRow("flac") << 6 << token(audio(container("flac", "audio/flac"), "flac", 86028));
        const QJsonObject mp4 = video(audio(container("mp4", "video/mp4"), "aac", 86018), "libx264", 27);
        QTest::newRow("format 7 is an MP4 file with extension mp4") << 7 << mp4;
        QTest::newRow("format -1 is an MP4 file with extension mp4") << -1 << mp4;
    }

    void keyFramesAndBitRateFollowTheRequest()
    {
        // A key frame every ten seconds; thousands of 1024 bits.
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 25, 7, 0);
        QCOMPARE(standins::lastOutputSettings().value("gop_size"), QJsonValue(250));
        QCOMPARE(standins::lastOutputSettings().value("video_bitrate"), QJsonValue(7168));
    }

    void outputSeesTheSettingsOfEveryFormat()
    {
        QFETCH(const int, format);
        QFETCH(const QJsonObject, expected);
        // Odd sizes: the table has the even ones.
        m_wrapper->setupFFmpeg(QStringLiteral("/r"), 1279, 719, 30, 4, format);
        QCOMPARE(standins::lastOutputSettings(), expected);
        QCOMPARE(standins::countOf("update output"), 1);
    }

    void videoConversionOfEveryFormat_data()
    {
        QTest::addColumn<RecordingFormat>("format");
        QTest::addColumn<bool>("limitedRange");
        QTest::addColumn<bool>("olderColours");

        QTest::newRow("mp4") << RecordingFormat::Mp4 << false << false;
        QTest::newRow("avi") << RecordingFormat::Avi << true << false;
        QTest::newRow("flv") << RecordingFormat::Flv << true << false;
        QTest::newRow("gif") << RecordingFormat::Gif << true << true;
        QTest::newRow("mp3") << RecordingFormat::Mp3 << false << false;
        QTest::newRow("aac") << RecordingFormat::Aac << false << false;
        QTest::newRow("flac") << RecordingFormat::Flac << false << false;
    }

    void videoConversionOfEveryFormat()
    {
        QFETCH(const RecordingFormat, format);
        QFETCH(const bool, limitedRange);
        QFETCH(const bool, olderColours);
        // Where it is the engine's own format, libobs converts nothing.
        const video_output_info* line = video_output_get_info(obs_get_video());
        const video_scale_info form = videoConversionFor(format, obs_get_video());
        QCOMPARE(form.format, line->format);
        QCOMPARE(form.width, line->width);
        QCOMPARE(form.height, line->height);
        QCOMPARE(form.range, limitedRange ? VIDEO_RANGE_PARTIAL : line->range);
        QCOMPARE(form.colorspace, olderColours ? VIDEO_CS_601 : line->colorspace);
        QCOMPARE(line->range, VIDEO_RANGE_FULL);
        QCOMPARE(line->colorspace, VIDEO_CS_709);
    }

    void startOrder()
    {
        setup(0);
        obsspy::clear();
        QStringList callsAtStatus{"no status"};
        QStringList textsAtStatus{"no status"};
        MessageCapture log;
        connect(m_wrapper.get(), &ObsWrapper::recordStatusChanged, this, [&](int) {
            callsAtStatus = obsspy::calls();
            textsAtStatus = log.texts();
        });
        QCOMPARE(m_wrapper->startRecording(), 0);
        // The status is the first thing of all.
        QCOMPARE(callsAtStatus, QStringList());
        QCOMPARE(textsAtStatus, QStringList());
        QCOMPARE(statuses(*m_status), QList<int>{0});
        QVERIFY(m_wrapper->isRecording());
        QVERIFY(!m_wrapper->isRecordingPaused());
        QCOMPARE(log.texts(QtDebugMsg), (QStringList{"Starting recording...", "Recording started successfully"}));
        // The output's end is followed from before its start.
        QCOMPARE(obsspy::calls(), (QStringList{"signal_handler_connect_ref stop", "obs_output_start",
                                               "signal_handler_connect_ref stop", "signal_handler_disconnect stop"}));
    }

    void framesFlowWhenTheRecordingIsSetUp()
    {
        QVERIFY(!obs_video_active());
        setup(0);
        QVERIFY(obs_video_active());
        obsspy::clear();
        QCOMPARE(m_wrapper->startRecording(), 0);
        QVERIFY(!obsspy::calls().contains("obs_add_raw_video_callback"));
    }

    void framesFlowAgainAtTheStartWhenTheVideoWasResetAfterTheSetUp()
    {
        setup(0);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
        QVERIFY(!obs_video_active());
        obsspy::clear();
        QCOMPARE(m_wrapper->startRecording(), 0);
        QVERIFY(obsspy::calls().indexOf("obs_add_raw_video_callback") >= 0);
        QVERIFY(obsspy::calls().indexOf("obs_add_raw_video_callback") < obsspy::calls().indexOf("obs_output_start"));
        // From the video that the engine has now.
        QCOMPARE(obs_output_video(standins::currentOutput()), obs_get_video());
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
    }

    void stopEndsWithStatusTwoAndDropsTheOutput()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        QVERIFY(standins::events().indexOf("stop output") >= 0);
        QTRY_COMPARE(standins::events().last(), QStringLiteral("destroy output"));
        QCOMPARE(m_wrapper->stopReason().code, 0);
    }

    void forcedStop()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(m_wrapper->stopRecording(true), 0);
        QVERIFY(standins::events().contains("force stop output"));
        QVERIFY(!standins::events().contains("stop output"));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void stopWithoutOutputOnlyClearsTheFlags()
    {
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(m_wrapper->stopRecording(true), 0);
        QVERIFY(!m_wrapper->isRecording());
        QVERIFY(!m_wrapper->isRecordingPaused());
        QVERIFY(m_status->isEmpty());
        QVERIFY(standins::events().isEmpty());
    }

    void everyRecordingHasAnOutputOfItsOwn()
    {
        for (int i = 0; i < 3; ++i) {
            setup(i);
            QCOMPARE(m_wrapper->startRecording(), 0);
            QCOMPARE(m_wrapper->stopRecording(false), 0);
        }
        QCOMPARE(standins::countOf("create output"), 3);
        QTRY_COMPARE(standins::countOf("destroy output"), 3);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2, 0, 2, 0, 2}));
    }

    void failedStartWithoutErrorTextSaysNoErrorMessage()
    {
        behaviour().outputStarts = false;
        setup(0);
        MessageCapture log;
        QCOMPARE(m_wrapper->startRecording(), -1);
        QCOMPARE(log.texts(QtDebugMsg),
                 (QStringList{"Starting recording...", "Failed to start recording. Error: No error message"}));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        QVERIFY(m_wrapper->isRecordingEndReached());
    }

    void failedStartWithErrorText()
    {
        behaviour().outputStarts = false;
        behaviour().outputError = "the shelf is full";
        setup(0);
        MessageCapture log;
        QCOMPARE(m_wrapper->startRecording(), -1);
        QCOMPARE(log.texts(QtDebugMsg).last(), QStringLiteral("Failed to start recording. Error: the shelf is full"));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_ERROR);
        QCOMPARE(m_wrapper->stopReason().text, QStringLiteral("the shelf is full"));
    }

    void releaseOrder()
    {
        QVERIFY(m_wrapper->initialize(320, 240, 30));
        standins::registerFadeTransition();
        QCOMPARE(m_wrapper->setupScene(1), 0);
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(obs_output_active(standins::currentOutput()));
        m_status.reset();
        obsspy::clear();
        m_wrapper.reset();
        const QStringList expected{"obs_volmeter_remove_callback",
                                   "obs_volmeter_remove_callback",
                                   "obs_volmeter_destroy",
                                   "obs_fader_destroy",
                                   "obs_volmeter_destroy",
                                   "obs_fader_destroy",
                                   "signal_handler_disconnect stop",
                                   "obs_encoder_release adv_archive_audio",
                                   "obs_encoder_release adv_stream_audio",
                                   "obs_encoder_release adv_aac5",
                                   "obs_encoder_release adv_aac4",
                                   "obs_encoder_release adv_aac3",
                                   "obs_encoder_release adv_aac2",
                                   "obs_encoder_release adv_aac1",
                                   "obs_encoder_release adv_aac0",
                                   "obs_scene_release",
                                   "obs_source_release Fade",
                                   "obs_output_release adv_ffmpeg_output",
                                   "obs_source_release Computer_Monitor_Capture",
                                   "obs_source_release Default Desktop Audio",
                                   "obs_source_release Default Mic/Aux",
                                   "obs_get_output_source 0",
                                   "obs_set_output_source 0 nothing",
                                   "obs_source_release Fade",
                                   "obs_get_output_source 1",
                                   "obs_get_output_source 2"};
        QCOMPARE(obsspy::calls().join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
        QVERIFY(obs_initialized());
        for (const char* const kind : {"monitor_capture", "wasapi_input_capture", "wasapi_output_capture"})
            QCOMPARE(standins::countOf(QStringLiteral("destroy %1").arg(QLatin1String(kind))), 1);
    }

private:
    static QJsonObject container(const char* extension, const char* mimeType)
    {
        const RecordingFormat format = extension == QByteArray("mp4") ? RecordingFormat::Mp4 : RecordingFormat::Avi;
        return {{"url", QLatin1String("/r.") + QLatin1String(extension)},
                {"format_name", extension},
                {"format_mime_type", mimeType},
                {"muxer_settings", QLatin1String(muxerOptions(format, writesHybridMp4()))}};
    }

    static QJsonObject video(QJsonObject settings, const char* encoder, int encoderId)
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

    static QJsonObject token(QJsonObject settings)
    {
        settings["video_bitrate"] = 1024;
        settings["video_encoder"] = "png";
        settings["video_encoder_id"] = 61;
        settings["scale_width"] = 2;
        settings["scale_height"] = 2;
        return settings;
    }

    static QJsonObject audio(QJsonObject settings, const char* encoder, int encoderId)
    {
        settings["audio_bitrate"] = 192;
        settings["audio_encoder"] = encoder;
        settings["audio_encoder_id"] = encoderId;
        return settings;
    }
};

REGISTER_TEST(testrun::gui<TestEngineRecording>);

#include "test_enginerecording.moc"
