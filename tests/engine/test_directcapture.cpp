// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/blackframes.h"
#include "engine/capture/directcapture.h"
#include "engine/capture/screenvideo.h"
#include "engine/capture/videoprobe.h"
#include "engine/core/obshandles.h"
#include "engine/core/rawvideo.h"
#include "engine/output/ffmpegsettings.h"
#include "tests/engine/stockengine.h"
#include "tests/engine/xserver.h"
#include "tests/support/mediafile.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kBlack = 0;
constexpr std::uint32_t kGreen = 0x14C850;
constexpr QRect kScreen(0, 0, 640, 480);
/// Above are columns, white where even, below rows.
constexpr int kColumnsEnd = 240;
/// What is recorded where the pointer is looked at.
constexpr QRect kWithPointer(101, 53, 232, 202);
/// MP4 keeps the range of the video.
const auto kMp4 = static_cast<int>(RecordingFormat::Mp4);
/// What of 256 steps the encoder may take from black and from white.
constexpr int kEncoderError = 80;

bool isWhiteAt(const QPoint& onScreen)
{
    return (onScreen.y() < kColumnsEnd ? onScreen.x() : onScreen.y()) % 2 == 0;
}

/// Counts the pixels that are not black or white as the screen is.
int wrongPixels(const QImage& frame, const QPoint& origin, int allowed,
                const std::function<bool(const QPoint&)>& isWhite = isWhiteAt)
{
    int wrong = 0;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const int gray = qGray(frame.pixel(x, y));
            const int expected = isWhite(origin + QPoint(x, y)) ? 255 : 0;
            wrong += std::abs(gray - expected) > allowed ? 1 : 0;
        }
    }
    return wrong;
}

/// Takes one frame from a video: its luma.
class LumaTap
{
public:
    static QImage take(video_t* video)
    {
        LumaTap tap;
        const video_scale_info conversion = conversionOf(video);
        const video_output_info& info = *video_output_get_info(video);
        tap.m_image = QImage(static_cast<int>(info.width), static_cast<int>(info.height), QImage::Format_Grayscale8);
        video_output_connect(video, &conversion, &LumaTap::onFrame, &tap);
        const bool came = QTest::qWaitFor([&] { return tap.m_hasFrame.load(); }, 10'000);
        video_output_disconnect(video, &LumaTap::onFrame, &tap);
        return came ? tap.m_image : QImage();
    }

private:
    static void onFrame(void* param, video_data* frame)
    {
        auto& self = *static_cast<LumaTap*>(param);
        for (int y = 0; y < self.m_image.height(); ++y)
            std::copy_n(frame->data[0] + static_cast<std::size_t>(frame->linesize[0]) * static_cast<std::size_t>(y),
                        self.m_image.width(), self.m_image.scanLine(y));
        self.m_hasFrame = true;
    }

    QImage m_image;
    std::atomic<bool> m_hasFrame{false};
};

bool isOfTheEngine(video_t* video)
{
    return video == obs_get_video();
}

qsizetype threadsNamed(const QByteArray& name)
{
    const QDir threads(QStringLiteral("/proc/self/task"));
    const QStringList numbers = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::count_if(numbers.begin(), numbers.end(), [&](const QString& number) {
        QFile file(threads.filePath(number + QLatin1String("/comm")));
        return file.open(QIODevice::ReadOnly) && file.readAll().trimmed() == name;
    });
}

video_t* recordedVideo()
{
    const ObsOutputHandle output(obs_get_output_by_name("adv_ffmpeg_output"));
    return output ? obs_output_video(output.get()) : nullptr;
}

} // namespace

/// Recordings of a real desktop without the engine's scene.
class TestDirectCapture : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_screen = std::make_unique<PaintedWindow>(kScreen, kBlack);
        for (int x = 0; x < kScreen.width(); x += 2)
            m_screen->paint(QRect(x, 0, 1, kColumnsEnd), kWhite);
        for (int y = kColumnsEnd; y < kScreen.height(); y += 2)
            m_screen->paint(QRect(0, y, kScreen.width(), 1), kWhite);
        EngineTimings timings;
        timings.release.delay = std::chrono::milliseconds(500);
        QCOMPARE(m_stock.start(timings), QString());
        m_stock.engine().setCaptureCursor(false);
    }

    void cleanupTestCase() { m_stock.release(); }

    void recordingHasAVideoOfItsOwnAndTheSceneIsNotRendered()
    {
        m_stock.engine().setSceneRendered(true);
        QVERIFY(!m_stock.engine().isSceneRendered());
        QVERIFY(m_stock.setMargins(0, 0, 0, 0));
        QCOMPARE(m_stock.begin(path("own"), kMp4), QString());
        QVERIFY(recordedVideo());
        QVERIFY(!isOfTheEngine(recordedVideo()));
        QVERIFY(!m_stock.engine().isSceneRendered());
        QVERIFY(!obs_video_active());
        QCOMPARE(m_stock.engine().resetVideo(320, 240, 320, 240, StockEngine::kFps), OBS_VIDEO_CURRENTLY_ACTIVE);
        QCOMPARE(m_stock.end(), QString());
        QCOMPARE(m_stock.engine().resetVideo(320, 240, 320, 240, StockEngine::kFps), OBS_VIDEO_SUCCESS);
    }

    void regionIsRecordedPixelByPixel_data()
    {
        QTest::addColumn<QRect>("region");
        QTest::addColumn<QRect>("recorded");
        QTest::newRow("361 wide") << QRect(101, 53, 361, 300) << QRect(101, 53, 362, 300);
        QTest::newRow("362 wide") << QRect(100, 50, 362, 301) << QRect(100, 50, 362, 302);
        QTest::newRow("363 wide") << QRect(33, 161, 363, 163) << QRect(33, 161, 364, 164);
        QTest::newRow("401 wide") << QRect(1, 1, 401, 401) << QRect(1, 1, 402, 402);
        QTest::newRow("far corner") << QRect(279, 117, 361, 363) << QRect(278, 116, 362, 364);
        QTest::newRow("whole screen") << kScreen << kScreen;
    }

    void regionIsRecordedPixelByPixel()
    {
        QFETCH(const QRect, region);
        QFETCH(const QRect, recorded);
        QVERIFY(setRegion(region));
        const QString file = path(QTest::currentDataTag());
        QCOMPARE(m_stock.begin(file, kMp4), QString());
        const QImage luma = LumaTap::take(recordedVideo());
        QVERIFY(waitForFrames(kFramesUntilSharp));
        QCOMPARE(m_stock.end(), QString());
        QCOMPARE(luma.size(), recorded.size());
        QCOMPARE(wrongPixels(luma, recorded.topLeft(), 0), 0);
        const QImage last = lastFrame(file);
        QCOMPARE(last.size(), recorded.size());
        QCOMPARE(wrongPixels(last, recorded.topLeft(), kEncoderError), 0);
    }

    void regionThatMovesIsFollowedPixelByPixel()
    {
        QVERIFY(setRegion(QRect(10, 20, 200, 100)));
        const QString file = path("moves");
        QCOMPARE(m_stock.begin(file, kMp4), QString());
        for (int x = 11; x < 60; ++x)
            QVERIFY(moveRegion(QRect(x, 20, 200, 100)));
        QVERIFY(waitForFrames(3));
        QCOMPARE(wrongPixels(LumaTap::take(recordedVideo()), QPoint(59, 20), 0), 0);
        QVERIFY(moveRegion(QRect(76, 133, 200, 100)));
        QVERIFY(waitForFrames(kFramesUntilSharp));
        QCOMPARE(m_stock.end(), QString());
        QCOMPARE(wrongPixels(lastFrame(file), QPoint(76, 133), kEncoderError), 0);
    }

    void largePointerIsInTheFile_data()
    {
        QTest::addColumn<int>("sizePx");
        QTest::newRow("64") << 64;
        QTest::newRow("128") << 128;
    }

    void largePointerIsInTheFile()
    {
        QFETCH(const int, sizePx);
        PaintedWindow white(kScreen, kWhite);
        const QPoint hotSpot(sizePx / 2, sizePx / 4);
        white.setBlockPointer(sizePx, hotSpot, 0);
        white.movePointer(QPoint(201, 121));
        const QImage last = lastFrame(recordedWithPointer(QTest::currentDataTag()));
        const QRect block(QPoint(201, 121) - hotSpot, QSize(sizePx, sizePx));
        QCOMPARE(last.size(), kWithPointer.size());
        QCOMPARE(wrongPixels(last, kWithPointer.topLeft(), kEncoderError,
                             [&block](const QPoint& position) { return !block.contains(position); }),
                 0);
    }

    void allImagesOfAnAnimatedPointerAreInTheFile()
    {
        PaintedWindow white(kScreen, kWhite);
        white.setAnimatedPointer(32, {0x0000, 0x8080, 0xFFFF}, 100);
        white.movePointer(QPoint(201, 121));
        const QString file = recordedWithPointer("animated");
        QList<QColor> missing{QColor(0, 0, 0), QColor(128, 0, 0), QColor(255, 0, 0)};
        for (const QImage& frame : MediaFile(recordingUrl(file, RecordingFormat::Mp4)).frames()) {
            const QColor seen = meanColour(frame, QPoint(217, 137) - kWithPointer.topLeft(), 4);
            missing.removeIf([&seen](const QColor& image) { return colourDistance(image, seen) < 32; });
        }
        QCOMPARE(missing, QList<QColor>());
    }

    void pauseLeavesOutWhatWasOnTheScreenMeanwhile()
    {
        QVERIFY(setRegion(QRect(0, 0, 64, 64)));
        const QString file = path("pause");
        QCOMPARE(m_stock.begin(file, kMp4), QString());
        QVERIFY(m_stock.engine().pauseRecording(true));
        const quint64 frames = waitUntilNoFrameComes();
        {
            const PaintedWindow meanwhile(QRect(0, 0, 64, 64), kGreen);
            QTest::qWait(200);
        }
        QCOMPARE(m_stock.engine().recordedFrames(), frames);
        QVERIFY(m_stock.engine().pauseRecording(false));
        QVERIFY(waitForFrames(5));
        QCOMPARE(m_stock.end(), QString());
        const QList<QImage> decoded = MediaFile(recordingUrl(file, RecordingFormat::Mp4)).frames();
        QVERIFY(!decoded.isEmpty());
        for (const QImage& frame : decoded)
            QVERIFY(colourDistance(meanColour(frame, QPoint(32, 32), 16), QColor(128, 128, 128)) < 32);
    }

    void nextRecordingMayBePreparedWhenTheEndOfTheLastIsSignalled()
    {
        QVERIFY(setRegion(QRect(0, 0, 64, 64)));
        QCOMPARE(m_stock.begin(path("last"), kMp4), QString());
        const QString next = path("next");
        const auto prepared = connect(&m_stock.engine(), &ObsWrapper::recordStatusChanged, this, [&](int status) {
            if (status == recordstatus::kEnded)
                m_stock.engine().setupFFmpeg(next, 64, 64, StockEngine::kFps, StockEngine::kBitRate, kMp4);
        });
        QCOMPARE(m_stock.end(), QString());
        disconnect(prepared);
        QVERIFY(!isOfTheEngine(recordedVideo()));
        QCOMPARE(m_stock.engine().startRecording(), 0);
        QVERIFY(waitForFrames(kFramesUntilSharp));
        QCOMPARE(m_stock.end(), QString());
        QVERIFY(MediaFile(recordingUrl(path("last"), RecordingFormat::Mp4)).isReadable());
        QCOMPARE(wrongPixels(lastFrame(next), QPoint(0, 0), kEncoderError), 0);
    }

    void recordingThatEndsByItselfLeavesItsVideoIdle()
    {
        QVERIFY(setRegion(QRect(0, 0, 64, 64)));
        m_stock.engine().setupFFmpeg(QStringLiteral("/proc/nowhere/film"), 64, 64, StockEngine::kFps,
                                     StockEngine::kBitRate, kMp4);
        QCOMPARE(m_stock.engine().startRecording(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(!m_stock.engine().isRecording(), 20'000);
        QTRY_VERIFY(!video_output_active(recordedVideo()));
        // Its connection to the X server goes with it.
        QTRY_COMPARE_WITH_TIMEOUT(threadsNamed("screen video"), 0, 20'000);
        QCOMPARE(m_stock.engine().stopRecording(false), 0);
        QCOMPARE(m_stock.begin(path("after"), kMp4), QString());
        QCOMPARE(m_stock.end(), QString());
    }

    void libobsThatRecordsOnlyItsOwnVideoIsKnown_data()
    {
        QTest::addColumn<std::uint32_t>("version");
        QTest::addColumn<bool>("recordsOthers");
        QTest::newRow("29.0.2") << std::uint32_t{MAKE_SEMANTIC_VERSION(29, 0, 2)} << true;
        QTest::newRow("31.0.4") << std::uint32_t{MAKE_SEMANTIC_VERSION(31, 0, 4)} << true;
        QTest::newRow("31.1.0") << std::uint32_t{MAKE_SEMANTIC_VERSION(31, 1, 0)} << false;
        QTest::newRow("31.1.1") << std::uint32_t{MAKE_SEMANTIC_VERSION(31, 1, 1)} << false;
        QTest::newRow("31.1.2") << std::uint32_t{MAKE_SEMANTIC_VERSION(31, 1, 2)} << true;
        QTest::newRow("32.0.0") << std::uint32_t{MAKE_SEMANTIC_VERSION(32, 0, 0)} << true;
    }

    void libobsThatRecordsOnlyItsOwnVideoIsKnown()
    {
        QFETCH(const std::uint32_t, version);
        QFETCH(const bool, recordsOthers);
        QCOMPARE(recordsOtherVideos(version), recordsOthers);
    }

    void videoWithoutFramesIsNotDelivered()
    {
        const QSize size(2, 2);
        const auto open = [&] {
            return ScreenVideo::open(std::make_unique<BlackFrames>(size), size, StockEngine::kFps);
        };
        QVERIFY(deliversFramesOf(open()->video()));
        const auto withoutFrames = open();
        withoutFrames->finish();
        QVERIFY(!deliversFramesOf(withoutFrames->video()));
    }

    void audioAloneHoldsNothingOfTheScreen()
    {
        const PaintedWindow white(kScreen, kWhite);
        QVERIFY(m_stock.setMargins(0, 0, 0, 0));
        const QString file = path("audio");
        QCOMPARE(m_stock.begin(file, static_cast<int>(RecordingFormat::Flac)), QString());
        QVERIFY(!isOfTheEngine(recordedVideo()));
        QImage black(2, 2, QImage::Format_Grayscale8);
        black.fill(0);
        QCOMPARE(LumaTap::take(recordedVideo()), black);
        QCOMPARE(m_stock.end(), QString());
        const MediaFile media(recordingUrl(file, RecordingFormat::Flac));
        QVERIFY2(media.isReadable(), qPrintable(media.error()));
        QVERIFY(media.audio());
    }

    /// With its own engine, as the next one.
    void sceneThatTakesOverAtTheStartRecordsPixelByPixel()
    {
        m_stock.release();
        CapturePlatform platform = CapturePlatform::current();
        platform.openFrames = [](const QRect& area, QString& obstacle) -> std::unique_ptr<FrameSource> {
            obstacle = QStringLiteral("too large");
            return area.width() > 2 ? nullptr : std::make_unique<BlackFrames>(area.size());
        };
        StockEngine stock;
        QCOMPARE(stock.start(EngineTimings(), platform), QString());
        stock.engine().setCaptureCursor(false);
        QVERIFY(stock.setMargins(100, kScreen.width() - 462, 50, kScreen.height() - 350));
        stock.engine().setSceneRendered(true);
        QVERIFY(!stock.engine().isSceneRendered());
        const QString file = path("takes over");
        QCOMPARE(stock.begin(file, kMp4), QString());
        QVERIFY(isOfTheEngine(recordedVideo()));
        QVERIFY(stock.engine().isSceneRendered());
        const quint64 sharp = stock.engine().recordedFrames() + kFramesUntilSharp;
        QTRY_VERIFY_WITH_TIMEOUT(stock.engine().recordedFrames() >= sharp, 20'000);
        QCOMPARE(stock.end(), QString());
        const QImage last = lastFrame(file);
        QCOMPARE(last.size(), QSize(364, 300));
        QCOMPARE(wrongPixels(last, QPoint(100, 50), kEncoderError), 0);
    }

    /// Last: it switches to the scene.
    void sceneTakesOverWhereItIsAskedFor()
    {
        m_stock.release();
        qputenv("KESTRANO_CAPTURE", "scene");
        StockEngine stock;
        QStringList lines;
        {
            const MessageCapture log;
            QCOMPARE(stock.start(), QString());
            lines = log.texts(QtInfoMsg);
        }
        qunsetenv("KESTRANO_CAPTURE");
        const auto reason = QStringLiteral("The screen is captured through the engine's scene: KESTRANO_CAPTURE=scene");
        QCOMPARE(lines.filter(reason).size(), 1);
        stock.engine().setSceneRendered(false);
        stock.engine().setSceneRendered(true);
        QVERIFY(stock.engine().isSceneRendered());
        QCOMPARE(stock.begin(path("scene"), kMp4), QString());
        QVERIFY(isOfTheEngine(recordedVideo()));
        QVERIFY(stock.engine().isSceneRendered());
        QCOMPARE(stock.end(), QString());
        QCOMPARE(lastFrame(path("scene")).size(), kScreen.size());
    }

private:
    /// The encoder makes a still screen better from frame to frame.
    static constexpr int kFramesUntilSharp = 45;

    bool waitForFrames(quint64 count) const
    {
        const quint64 wanted = m_stock.engine().recordedFrames() + count;
        return QTest::qWaitFor([&] { return m_stock.engine().recordedFrames() >= wanted; }, 20'000);
    }

    static QImage lastFrame(const QString& storePath)
    {
        const QList<QImage> frames = MediaFile(recordingUrl(storePath, RecordingFormat::Mp4)).frames();
        return frames.isEmpty() ? QImage() : frames.last();
    }

    /// The stored path of a recording of kWithPointer that shows the pointer.
    QString recordedWithPointer(const char* name)
    {
        QString file = path(name);
        m_stock.engine().setCaptureCursor(true);
        const bool recorded = setRegion(kWithPointer) && m_stock.begin(file, kMp4).isEmpty() &&
                              waitForFrames(kFramesUntilSharp) && m_stock.end().isEmpty();
        m_stock.engine().setCaptureCursor(false);
        return recorded ? file : QString();
    }

    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    bool setRegion(const QRect& region)
    {
        return m_stock.setMargins(region.x(), kScreen.width() - region.x() - region.width(), region.y(),
                                  kScreen.height() - region.y() - region.height());
    }

    /// The video is not reset while it records.
    bool moveRegion(const QRect& region)
    {
        return m_stock.setTarget(region.x(), kScreen.width() - region.x() - region.width(), region.y(),
                                 kScreen.height() - region.y() - region.height());
    }

    /// A pause takes effect after one or two frames.
    quint64 waitUntilNoFrameComes()
    {
        quint64 frames = 0;
        while (frames != m_stock.engine().recordedFrames()) {
            frames = m_stock.engine().recordedFrames();
            QTest::qWait(150);
        }
        return frames;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PaintedWindow> m_screen;
    StockEngine m_stock;
};

REGISTER_TEST(testrun::gui<TestDirectCapture>);

#include "test_directcapture.moc"
