// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/output/ffmpegsettings.h"
#include "tests/engine/stockengine.h"
#include "tests/support/mediafile.h"
#include "tests/support/testpattern.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cmath>

namespace {

constexpr double kNsPerSecond = 1e9;
/// A second of a stretch is looked at, and a gap of a third of a second parts two of them.
constexpr int kTakeMs = 1200;
constexpr int kPauseMs = 600;
/// The edges of two pauses add 0.2 s, frames that follow the requested end until the encoder has returned it up to
/// 0.2 s. A pause in the file would add more.
constexpr double kLeewaySeconds = 0.5;

/// One stretch of a recording that no pause interrupts.
struct Stretch
{
    qsizetype firstFrame = 0;
    qsizetype frames = 0;
    uint32_t firstNumber = 0;
    uint32_t lastNumber = 0;
};

/// The stretches of a file's numbers: a gap of more than a third of a second parts them.
QList<Stretch> stretchesOf(const QList<std::optional<uint32_t>>& numbers)
{
    QList<Stretch> stretches;
    for (qsizetype frame = 0; frame < numbers.size(); ++frame) {
        const uint32_t number = numbers.at(frame).value_or(0);
        if (stretches.isEmpty() || number > stretches.last().lastNumber + StockEngine::kPatternRate / 3)
            stretches.append({frame, 0, number, number});
        ++stretches.last().frames;
        stretches.last().lastNumber = number;
    }
    return stretches;
}

/// The most frames in a row that show the same number.
int longestStandstill(const QList<std::optional<uint32_t>>& numbers)
{
    int longest = 0;
    int here = 0;
    for (qsizetype frame = 0; frame < numbers.size(); ++frame) {
        here = frame > 0 && numbers.at(frame) == numbers.at(frame - 1) ? here + 1 : 1;
        longest = std::max(longest, here);
    }
    return longest;
}

} // namespace

/// Pausing real recordings of a desktop that shows and plays the time, with the stock plug-ins.
class TestStockPause : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_stock.showPattern(), QString());
        QCOMPARE(m_stock.playTone(), QString());
        QCOMPARE(m_stock.start(), QString());
        // A source is silent for about a second after the sound server has connected it.
        bool isHeard = false;
        const auto connection =
            connect(&m_stock.engine(), &ObsWrapper::playerVolumeDataChange, this,
                    [&isHeard](const float* magnitude) { isHeard = magnitude[0] < -1 && magnitude[0] > -60; });
        QTRY_VERIFY_WITH_TIMEOUT(isHeard, 20'000);
        disconnect(connection);
    }

    void cleanupTestCase() { m_stock.release(); }

    void nothingToPauseWithoutARecording()
    {
        QVERIFY(!m_stock.engine().pauseRecording(true));
        QVERIFY(!m_stock.engine().isRecordingPaused());
    }

    void twoPausesAreNotInTheFile_data()
    {
        QTest::addColumn<int>("format");
        // Video and audio, video alone, audio with a token video, audio alone.
        for (const RecordingFormat format :
             {RecordingFormat::Mp4, RecordingFormat::Gif, RecordingFormat::Mp3, RecordingFormat::Aac})
            QTest::newRow(qPrintable(recordingFileExtension(format).toUpper())) << static_cast<int>(format);
    }

    void twoPausesAreNotInTheFile()
    {
        QFETCH(const int, format);
        const QString path = m_folder.filePath(QStringLiteral("two%1").arg(format));
        QSignalSpy status(&m_stock.engine(), &ObsWrapper::recordStatusChanged);
        QCOMPARE(m_stock.begin(path, format), QString());
        QVERIFY(m_stock.engine().canPauseRecording());
        double expected = take();
        for (int pause = 0; pause < 2; ++pause) {
            QVERIFY(m_stock.engine().pauseRecording(true));
            QVERIFY(m_stock.engine().isRecordingPaused());
            QVERIFY(m_stock.engine().isRecording());
            QTest::qWait(kPauseMs);
            QVERIFY(m_stock.engine().pauseRecording(false));
            QVERIFY(!m_stock.engine().isRecordingPaused());
            expected += take();
        }
        QCOMPARE(m_stock.end(), QString());
        // The wrapper reports the start and the end only.
        QTRY_COMPARE(status.size(), 2);
        const RecordingFormat recorded = recordingFormatFromIndex(format);
        const MediaFile file(recordingUrl(path, recorded));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        if (hasVideo(recorded))
            checkVideo(file, 3, expected);
        if (recorded != RecordingFormat::Gif)
            checkAudioLength(file, expected);
        if (hasVideo(recorded) && recorded != RecordingFormat::Gif)
            checkTogether(file);
    }

    void manyHastyPausesDoNotDriveAudioAndVideoApart()
    {
        const QString path = m_folder.filePath(QStringLiteral("hasty"));
        QCOMPARE(m_stock.begin(path, 0), QString());
        QTest::qWait(kTakeMs);
        for (int pause = 0; pause < 10; ++pause) {
            QVERIFY(m_stock.engine().pauseRecording(true));
            QTest::qWait(pause * 13);
            QVERIFY(m_stock.engine().pauseRecording(false));
            QTest::qWait((9 - pause) * 17);
        }
        QTest::qWait(kTakeMs);
        QCOMPARE(m_stock.end(), QString());
        const MediaFile file(path + QLatin1String(".mp4"));
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        checkTogether(file);
    }

    void stopWhilePausedKeepsAllThatCameBefore_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("mp4") << 0;
        QTest::newRow("avi") << 1;
    }

    void stopWhilePausedKeepsAllThatCameBefore()
    {
        QFETCH(const int, format);
        const QString path = m_folder.filePath(QStringLiteral("stop%1").arg(format));
        QCOMPARE(m_stock.begin(path, format), QString());
        QTest::qWait(kTakeMs);
        const std::optional<uint32_t> atPause = StockEngine::numberOnScreen();
        QVERIFY(m_stock.engine().pauseRecording(true));
        QTest::qWait(kPauseMs);
        QCOMPARE(m_stock.end(), QString());
        QVERIFY(!m_stock.engine().isRecordingPaused());
        const MediaFile file(recordingUrl(path, recordingFormatFromIndex(format)));
        const QList<Stretch> stretches = stretchesOf(file.numbers(TestPattern(m_stock.size())));
        QVERIFY(!stretches.isEmpty() && stretches.size() <= 2);
        QVERIFY2(stretches.first().lastNumber >= *atPause, qPrintable(QString::number(stretches.first().lastNumber)));
        // What is in it from after the pause is a few frames at most.
        if (stretches.size() == 2)
            QVERIFY2(stretches.last().frames <= 8, qPrintable(QString::number(stretches.last().frames)));
    }

    void audioReachesToThePauseThatTheRecordingIsStoppedIn()
    {
        const QString path = m_folder.filePath(QStringLiteral("sound"));
        QCOMPARE(m_stock.begin(path, 4), QString());
        const int64_t first = monotonicNow();
        QTest::qWait(kTakeMs);
        const double asked = static_cast<double>(monotonicNow() - first) / kNsPerSecond;
        QVERIFY(m_stock.engine().pauseRecording(true));
        QTest::qWait(kPauseMs);
        QCOMPARE(m_stock.end(), QString());
        const double seconds =
            static_cast<double>(MediaFile(path + QLatin1String(".mp3")).samples(48000).size()) / 48000.0;
        QVERIFY2(seconds >= asked - 0.02 && seconds < asked + 0.5, qPrintable(QString::number(seconds - asked)));
    }

    void endRequestedRightAfterAPauseIsDrainedFor()
    {
        const QString path = m_folder.filePath(QStringLiteral("after"));
        QCOMPARE(m_stock.begin(path, 0), QString());
        QTest::qWait(kTakeMs);
        QVERIFY(m_stock.engine().pauseRecording(true));
        QTest::qWait(kPauseMs);
        QVERIFY(m_stock.engine().pauseRecording(false));
        QTest::qWait(300);
        const std::optional<uint32_t> atRequest = StockEngine::numberOnScreen();
        QCOMPARE(m_stock.end(), QString());
        const NumbersHeld numbers =
            countNumbers(MediaFile(path + QLatin1String(".mp4")).numbers(TestPattern(m_stock.size())));
        QVERIFY(numbers.last.has_value());
        QVERIFY2(*numbers.last >= *atRequest, qPrintable(QString::number(*atRequest - *numbers.last)));
    }

    void pausedRecordingThatIsForcedToStopClosesItsFile()
    {
        const QString path = m_folder.filePath(QStringLiteral("forced"));
        QCOMPARE(m_stock.begin(path, 0), QString());
        // Else the file would be empty.
        const int frames = m_stock.engine().encoderDelayFrames() + StockEngine::kFps;
        QTRY_VERIFY_WITH_TIMEOUT(m_stock.engine().recordedFrames() > static_cast<quint64>(frames), 20'000);
        QVERIFY(m_stock.engine().pauseRecording(true));
        QCOMPARE(m_stock.engine().stopRecording(true), 0);
        QVERIFY(!m_stock.engine().isRecordingPaused());
        QVERIFY(MediaFile(path + QLatin1String(".mp4")).isReadable());
    }

    // Runs last: it has an engine of its own.
    void stopInTheMiddleOfAResumeIsNotBlocked()
    {
        // Where the stop waited for video and audio to meet, it would wait for ever.
        EngineTimings timings;
        timings.resumeLimit = std::chrono::hours(1);
        m_stock.release();
        QCOMPARE(m_stock.start(timings), QString());
        const QString path = m_folder.filePath(QStringLiteral("middle"));
        QCOMPARE(m_stock.begin(path, 1), QString());
        QTest::qWait(kTakeMs);
        QVERIFY(m_stock.engine().pauseRecording(true));
        QTest::qWait(kPauseMs);
        QVERIFY(m_stock.engine().pauseRecording(false));
        QCOMPARE(m_stock.engine().stopRecording(false), 0);
        QVERIFY(MediaFile(path + QLatin1String(".avi")).isReadable());
    }

private:
    /// Lets a recording run for a time, which is returned in seconds.
    static double take()
    {
        const int64_t began = monotonicNow();
        QTest::qWait(kTakeMs);
        return static_cast<double>(monotonicNow() - began) / kNsPerSecond;
    }

    void checkVideo(const MediaFile& file, int takes, double expected) const
    {
        const QList<std::optional<uint32_t>> numbers = file.numbers(TestPattern(m_stock.size()));
        QVERIFY(!numbers.contains(std::nullopt));
        const QList<Stretch> stretches = stretchesOf(numbers);
        QCOMPARE(stretches.size(), takes);
        double shown = 0;
        for (const Stretch& stretch : stretches)
            shown += static_cast<double>(stretch.lastNumber - stretch.firstNumber + 1) / StockEngine::kPatternRate;
        const double length = file.video()->durationSeconds;
        qInfo("frame: %.3f s for %.3f s, at most %d alike in a row", length, expected, longestStandstill(numbers));
        QVERIFY2(std::abs(length - expected) < kLeewaySeconds, qPrintable(QString::number(length - expected)));
        QVERIFY2(std::abs(length - shown) < 0.15, qPrintable(QString::number(length - shown)));
        QVERIFY2(longestStandstill(numbers) <= 5, qPrintable(QString::number(longestStandstill(numbers))));
    }

    void checkAudioLength(const MediaFile& file, double expected) const
    {
        const double seconds =
            static_cast<double>(file.samples(testtone::kSamplesPerSecond).size()) / testtone::kSamplesPerSecond;
        qInfo("sound: %.3f s for %.3f s", seconds, expected);
        QVERIFY2(std::abs(seconds - expected) < kLeewaySeconds, qPrintable(QString::number(seconds - expected)));
    }

    /// In the middle of each long stretch the audio and the video show the same time, as far apart as the sound
    /// server delays the audio.
    void checkTogether(const MediaFile& file) const
    {
        constexpr int kSpanMs = 300;
        const QList<std::optional<uint32_t>> numbers = file.numbers(TestPattern(m_stock.size()));
        const QList<float> samples = file.samples(testtone::kSamplesPerSecond);
        std::optional<double> firstMs;
        for (const Stretch& stretch : stretchesOf(numbers)) {
            if (stretch.frames < StockEngine::kFps)
                continue;
            const qsizetype frame = stretch.firstFrame + stretch.frames / 2;
            const double at = file.video()->frameSeconds.at(frame) - file.video()->startSeconds;
            const int64_t seen =
                momentOfNumber(numbers.at(frame).value_or(0), StockEngine::kPatternRate, monotonicNow());
            const auto heard = testtone::momentOfSample(
                samples, static_cast<qsizetype>(at * testtone::kSamplesPerSecond), kSpanMs, seen);
            QVERIFY(heard.has_value());
            const double apartMs = static_cast<double>(*heard - seen) / 1e6;
            qInfo("at %.2f s the sound is %+.0f ms apart", at, apartMs);
            firstMs = firstMs.value_or(apartMs);
            QVERIFY2(std::abs(apartMs - *firstMs) < 40, qPrintable(QString::number(apartMs)));
        }
    }

    StockEngine m_stock;
    QTemporaryDir m_folder;
};

REGISTER_TEST(testrun::gui<TestStockPause>);

#include "test_stockpause.moc"
