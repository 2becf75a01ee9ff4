// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/mediafile.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <cmath>

namespace {

const auto kMp4 = QStringLiteral("mp4");
const QSize kScreen(640, 360);
/// Away from the top edge, where the pointer calls the floating toolbar.
const QPoint kElsewhere(320, 300);
constexpr int kTakeMs = 1200;
constexpr int kMessageTimeoutMs = 10'000;
/// The edges of two pauses add 0.2 s, frames that follow the requested end until the encoder has returned it up to
/// 0.2 s; a pause in the file would add two seconds.
constexpr double kLengthErrorSeconds = 0.6;

/// A stretch of time in CLOCK_MONOTONIC.
struct Span
{
    int64_t fromNs = 0;
    int64_t toNs = 0;

    double seconds() const { return static_cast<double>(toNs - fromNs) / 1e9; }
};

QString lengthError(double seconds, double expected)
{
    return std::abs(seconds - expected) <= kLengthErrorSeconds
               ? QString()
               : QStringLiteral("%1 s instead of %2 s").arg(seconds).arg(expected);
}

/// Presses the pause button of the floating toolbar where it stands; the moment of the program's answer.
std::optional<int64_t> pressPause(ProgramUnderTest& program, const QString& answer)
{
    const QPoint inBar(60, 20);
    const auto bar = visibleWindow(QStringLiteral("Recording Toolbar"));
    const qsizetype from = program.messages().size();
    if (!bar || !pointTo(bar->topLeft() + inBar) || !xdotool({"click", "1"}))
        return std::nullopt;
    const auto line = program.waitForMessage(answer, kMessageTimeoutMs, from);
    return line ? std::optional(line->monotonicNs) : std::nullopt;
}

std::optional<int64_t> pressPause(ProgramUnderTest& program)
{
    return pressPause(program, QStringLiteral("Recording paused"));
}

std::optional<int64_t> pressResume(ProgramUnderTest& program)
{
    return pressPause(program, QStringLiteral("Recording resumed"));
}

/// The time on the floating toolbar, as it is on the screen.
QImage clockOnScreen()
{
    const auto bar = visibleWindow(QStringLiteral("Recording Toolbar"));
    return bar ? x11clients::grab(bar->adjusted(90, 8, -90, -8)) : QImage();
}

} // namespace

/// Pauses of the running program, made as a user makes them.
class TestPause : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void twoPausesPressedOnTheToolbarAreNotInTheFile()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY(pointTo(kElsewhere));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QList<Span> pauses;
        QList<QImage> clocks;
        for (int count = 0; count < 2; ++count) {
            QTest::qWait(kTakeMs);
            QVERIFY(pointTo({kScreen.width() / 2, 2}));
            const auto paused = pressPause(program);
            QVERIFY2(paused.has_value(), qPrintable(program.transcript()));
            clocks.append(pausedClock());
            const auto resumed = pressResume(program);
            QVERIFY2(resumed.has_value(), qPrintable(program.transcript()));
            pauses.append({*paused, *resumed});
            QVERIFY(pointTo(kElsewhere));
        }
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        // The clock went on between the pauses, and in neither of them.
        QVERIFY(!clocks.first().isNull() && !clocks.last().isNull());
        QVERIFY(clocks.first() != clocks.last());

        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video() && file.audio(), qPrintable(file.error()));
        const double expected =
            Span{take.startedNs, take.stopRequestedNs}.seconds() - pauses.first().seconds() - pauses.last().seconds();
        for (const MediaStream& stream : file.streams()) {
            const QString error = lengthError(stream.durationSeconds, expected);
            QVERIFY2(error.isEmpty(), qPrintable(stream.kind + QLatin1String(": ") + error));
        }
        const QString shown = shownFromPause(file, pauses);
        QVERIFY2(shown.isEmpty(), qPrintable(shown));
    }

    void shiftWithTheHotkeyPausesAndGoesOn()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kTakeMs);
        const auto paused = pressShifted(program, QStringLiteral("Recording paused"));
        QVERIFY2(paused.has_value(), qPrintable(program.transcript()));
        QTest::qWait(kTakeMs);
        const auto resumed = pressShifted(program, QStringLiteral("Recording resumed"));
        QVERIFY2(resumed.has_value(), qPrintable(program.transcript()));
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const double expected =
            Span{take.startedNs, take.stopRequestedNs}.seconds() - Span{*paused, *resumed}.seconds();
        const QString error = lengthError(MediaFile(take.path).video()->durationSeconds, expected);
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }

    void stoppedByTheHotkeyWhilePausedTheFileIsWhole()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        // Below the position of the toolbar, which therefore stays there, wherever the pointer is.
        const QRect region(41, 151, 204, 150);
        QCOMPARE(regionuser::chooseRegion(program, region), region);
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(pointTo(kElsewhere));
        QTest::qWait(kTakeMs);
        const auto paused = pressPause(program);
        QVERIFY2(paused.has_value(), qPrintable(program.transcript()));
        QTest::qWait(kTakeMs);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QCOMPARE(file.video()->size, QSize(204, 150));
        // Nothing from before the pause is lost; what brings it out of the encoder may follow it.
        const double missing = Span{take.startedNs, *paused}.seconds() - file.video()->durationSeconds;
        QVERIFY2(missing <= kLengthErrorSeconds && missing >= -2 * kLengthErrorSeconds,
                 qPrintable(QString::number(missing)));
    }

private:
    /// The moment of the program's answer.
    static std::optional<int64_t> pressShifted(ProgramUnderTest& program, const QString& answer)
    {
        const qsizetype from = program.messages().size();
        ProgramUnderTest::pressKey(QStringLiteral("shift+F9"));
        const auto line = program.waitForMessage(answer, kMessageTimeoutMs, from);
        return line ? std::optional(line->monotonicNs) : std::nullopt;
    }

    /// The clock of a paused recording, which blinks; a null image when it did not stand still for more than a second.
    static QImage pausedClock()
    {
        constexpr int kFadeMs = 400;
        constexpr int kLooks = 14;
        constexpr int kLookMs = 100;
        QTest::qWait(kFadeMs);
        QList<QImage> times;
        for (int look = 0; look < kLooks; ++look) {
            const QImage image = clockOnScreen();
            if (!isPlain(image) && !times.contains(image))
                times.append(image);
            QTest::qWait(kLookMs);
        }
        return times.size() == 1 ? times.constFirst() : QImage();
    }

    static bool isPlain(const QImage& image)
    {
        QImage plain = image;
        if (!plain.isNull())
            plain.fill(plain.pixelColor(0, 0));
        return image == plain;
    }

    /// What the file shows of the time in which it was paused; empty when it shows nothing of it.
    static QString shownFromPause(const MediaFile& file, const QList<Span>& pauses)
    {
        // What was on its way when the button was pressed, and a number's own time.
        constexpr int64_t kAtStartNs = 250'000'000;
        constexpr int64_t kAtEndNs = 50'000'000;
        const QList<std::optional<uint32_t>> numbers = file.numbers(TestPattern(kScreen));
        for (const std::optional<uint32_t>& number : numbers) {
            if (!number)
                return QStringLiteral("a frame without a number");
            const int64_t moment = momentOfNumber(*number, kFramesPerSecond, pauses.first().fromNs);
            for (const Span& pause : pauses)
                if (moment > pause.fromNs + kAtStartNs && moment < pause.toNs - kAtEndNs)
                    return QStringLiteral("a frame from %1 s after the button was pressed")
                        .arg(Span{pause.fromNs, moment}.seconds());
        }
        return {};
    }

    Performance m_performance;
};

REGISTER_TEST(testrun::core<TestPause>);
#include "test_pause.moc"
