// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/durations.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testrun.h"

#include <QProcess>
#include <QRect>
#include <QTest>

namespace {

const auto kMp4 = QStringLiteral("mp4");
constexpr int kShortMs = 1500;
constexpr int kWindowTimeoutMs = 15'000;
constexpr int kMessageTimeoutMs = 20'000;
/// What is still so after twice the time that a window may take to be gone stays so.
constexpr int kStaysMs = 2 * Durations().windowGoneMs;
constexpr int kLookMs = 50;
/// On a desktop of 640x360, with room for the frame and its bar.
constexpr QRect kRegion(340, 100, 240, 180);
/// The button that pauses, on the floating bar at the middle of the top edge: the second of 40 pixels.
constexpr QPoint kPauseButton(640 / 2 - 280 / 2 + 60, 20);

bool run(const QString& tool, const QStringList& arguments)
{
    return QProcess::execute(tool, arguments) == 0;
}

/// Chooses the region tile with the keyboard. The record button has the focus after the start, and the tile seven
/// controls after it in the order of the Tab key, where the three pages are one.
bool chooseRegionTile(ProgramUnderTest& program)
{
    const auto window = program.mainWindow(false, kWindowTimeoutMs);
    if (!window)
        return false;
    x11clients::activate(window->id);
    QTest::qWait(300);
    for (int step = 0; step < 7; ++step)
        ProgramUnderTest::pressKey(QStringLiteral("Tab"));
    const qsizetype from = program.messages().size();
    ProgramUnderTest::pressKey(QStringLiteral("space"));
    if (!program.waitForMessage(QStringLiteral("Select region clicked"), kMessageTimeoutMs, from))
        return false;
    QTest::qWait(300);
    return true;
}

/// Drags the region out, and the frame stands around it.
bool frameRegion(ProgramUnderTest& program)
{
    if (!chooseRegionTile(program) || !pointTo(kRegion.topLeft()) || !xdotool({"mousedown", "1"}))
        return false;
    const bool dragged = pointTo(kRegion.center()) && pointTo(kRegion.bottomRight());
    QTest::qWait(100);
    return xdotool({"mouseup", "1"}) && dragged &&
           program.waitForMessage(QStringLiteral("position 340 100 580 280"), kMessageTimeoutMs).has_value();
}

/// The ways in which a user brings a minimised window back.
void bringBack(uint32_t window)
{
    const QString id = QString::number(window);
    x11clients::activate(window);
    QVERIFY(run(QStringLiteral("wmctrl"), {"-i", "-a", id}));
    QVERIFY(xdotool({"windowmap", id}));
    QVERIFY(xdotool({"windowactivate", id}));
}

} // namespace

/// The main window of the running program: what becomes of it, and of all that it shows, around a recording.
class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void closingItWithTheFrameShownEndsTheProgram()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(frameRegion(program), qPrintable(program.transcript()));
        close(program, false);
    }

    void closingItWhileARegionIsChosenEndsTheProgram()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(chooseRegionTile(program), qPrintable(program.transcript()));
        close(program, false);
    }

    void closingItWhileARegionIsRecordedFinishesTheFile()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QVERIFY2(frameRegion(program), qPrintable(program.transcript()));
        const Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(kShortMs);
        close(program, true);
        const MediaFile file(take.path);
        QVERIFY2(file.isReadable() && file.video(), qPrintable(file.error()));
        QCOMPARE(file.video()->size, kRegion.size());
        QVERIFY(file.durationSeconds() > 1.0);
    }

    void whileRecordingItCannotBeBroughtBack()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const auto window = program.mainWindow(true, kWindowTimeoutMs);
        QVERIFY(window.has_value());
        expectHeld(program, window->id);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        // What the program asked for when it brought the window back is done first.
        QTest::qWait(kStaysMs);
        x11clients::minimise(window->id);
        QVERIFY(program.mainWindow(true, kWindowTimeoutMs).has_value());
        bringBack(window->id);
        QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
        QTest::qWait(kStaysMs);
        QVERIFY(program.mainWindow(false, 0).has_value());
    }

    /// The button has the focus since the start.
    void whilePausedItCanBeBroughtBackAndItsButtonGoesOnWithTheRecording()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const auto window = program.mainWindow(true, kWindowTimeoutMs);
        QVERIFY(window.has_value());
        pressPause();
        QVERIFY2(program.waitForMessage(QStringLiteral("Recording paused"), kMessageTimeoutMs).has_value(),
                 qPrintable(program.transcript()));
        QVERIFY(program.mainWindow(true, kWindowTimeoutMs).has_value());
        bringBack(window->id);
        QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
        QTest::qWait(kStaysMs);
        QVERIFY(program.mainWindow(false, 0).has_value());
        ProgramUnderTest::pressKey(QStringLiteral("space"));
        QVERIFY2(program.waitForMessage(QStringLiteral("Recording resumed"), kMessageTimeoutMs).has_value(),
                 qPrintable(program.transcript()));
        expectHeld(program, window->id);
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(MediaFile(take.path).isReadable());
    }

    void afterARecordingTheButtonHasTheFocus()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const auto window = program.mainWindow(false, kWindowTimeoutMs);
        QVERIFY(window.has_value());
        x11clients::activate(window->id);
        for (int step = 0; step < 7; ++step)
            ProgramUnderTest::pressKey(QStringLiteral("Tab"));
        Take take = beginTake(program, kMp4);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        endTake(program, take);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QVERIFY(program.mainWindow(false, kWindowTimeoutMs).has_value());
        x11clients::activate(window->id);
        const qsizetype from = program.messages().size();
        ProgramUnderTest::pressKey(QStringLiteral("space"));
        QVERIFY2(program.waitForMessage(QStringLiteral("Recording started..."), kMessageTimeoutMs, from).has_value(),
                 qPrintable(program.transcript()));
    }

private:
    static void close(ProgramUnderTest& program, bool minimised)
    {
        const auto window = program.mainWindow(minimised, kWindowTimeoutMs);
        QVERIFY(window.has_value());
        x11clients::close(window->id);
        QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
        QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    }

    static void expectHeld(ProgramUnderTest& program, uint32_t window)
    {
        bringBack(window);
        QTest::qWait(kStaysMs);
        for (int waitedMs = 0; waitedMs < kStaysMs; waitedMs += kLookMs) {
            QVERIFY2(program.mainWindow(true, 0).has_value(), qPrintable(program.transcript()));
            QVERIFY(x11clients::activeWindow() != window);
            QTest::qWait(kLookMs);
        }
    }

    /// In a recording of the whole screen the bar shows while the pointer asks for it at the top edge.
    static void pressPause()
    {
        QVERIFY(pointTo({kPauseButton.x(), 0}));
        QVERIFY(visibleWindow(QStringLiteral("Recording Toolbar")).has_value());
        QVERIFY(pointTo(kPauseButton));
        QVERIFY(xdotool({"click", "1"}));
    }

    Performance m_performance;
};

REGISTER_TEST(testrun::core<TestMainWindow>);
#include "test_mainwindow.moc"
