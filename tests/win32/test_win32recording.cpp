// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/testrun.h"
#include "tests/win32/win32user.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kPollMs = 50;
constexpr int kSpanMs = 1500;
constexpr double kNsPerSecond = 1e9;
/// The button that pauses, in the floating bar.
constexpr QPoint kPauseButton(60, 20);
/// Away from the top edge, where the pointer calls the bar.
constexpr QPoint kElsewhere(480, 400);
const auto kBarTitle = QStringLiteral("Recording Toolbar");

using win32user::kTimeoutMs;

/// Calls the floating bar with the pointer and presses its button that pauses, until the program answers: the bar may
/// have gone again before a slow desktop brought it the click. The moment of the answer.
std::optional<int64_t> pressPause(ProgramUnderTest& program, const QString& answer)
{
    constexpr int kAnswerMs = 4000;
    const qsizetype from = program.messages().size();
    QElapsedTimer waited;
    waited.start();
    while (!waited.hasExpired(kTimeoutMs)) {
        if (!WineDesktop::pointTo({kElsewhere.x(), 0}))
            return std::nullopt;
        const auto bar = win32user::awaitWindow([](const WindowsWindow& window) { return window.title == kBarTitle; });
        if (!bar || !win32user::click(*bar, kPauseButton))
            return std::nullopt;
        if (const auto line = program.waitForMessage(answer, kAnswerMs, from))
            return line->monotonicNs;
    }
    return std::nullopt;
}

} // namespace

/// What a user does, and another program may do, while the Windows program records.
class TestWin32Recording : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_desktop.begin(), QString());
        QCOMPARE(m_performance.begin(kFramesPerSecond), QString());
    }

    void aPausePressedOnTheBarIsNotInTheFile();
    void theBarFadesByTheAlphaOfItsLayer();
    void theHeldWindowTakesNoFocusFromAnother();

private:
    /// Puts another program's window in front; its handle, 0 when it is not there.
    static int64_t bringAnotherToFront();
    static QString waitForBar(bool shown, int alpha);

    WineDesktop m_desktop;
    WindowsPerformance m_performance;
};

void TestWin32Recording::aPausePressedOnTheBarIsNotInTheFile()
{
    Win32Program program;
    program.setSetting(QStringLiteral("recording/micSwitch"), true);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, QStringLiteral("mp4"));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTest::qWait(kSpanMs);
    const auto paused = pressPause(program, QStringLiteral("Recording paused"));
    QVERIFY2(paused, qPrintable(program.transcript()));
    QTest::qWait(kSpanMs);
    const auto resumed = pressPause(program, QStringLiteral("Recording resumed"));
    QVERIFY2(resumed, qPrintable(program.transcript()));
    QTest::qWait(kSpanMs);
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

    const MediaFile file(WineDesktop::unixPath(take.path));
    QVERIFY2(file.isReadable() && file.video() && file.audio(), qPrintable(file.error()));
    const auto all = static_cast<double>(take.stopRequestedNs - take.startedNs) / kNsPerSecond;
    const auto pause = static_cast<double>(*resumed - *paused) / kNsPerSecond;
    QVERIFY(pause > 1.0);
    for (const double seconds : {file.video()->durationSeconds, file.audio()->durationSeconds})
        QVERIFY2(std::abs(seconds - (all - pause)) < 0.7,
                 qPrintable(QStringLiteral("%1 s of %2 s with a pause of %3 s").arg(seconds).arg(all).arg(pause)));
}

void TestWin32Recording::theBarFadesByTheAlphaOfItsLayer()
{
    constexpr int kOpaque = 255;
    constexpr int64_t kAlphaFlag = 2;
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, QStringLiteral("mp4"));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(WineDesktop::pointTo({kElsewhere.x(), 0}));
    QVERIFY(WineDesktop::visibleWindow(kBarTitle, kTimeoutMs));
    for (int fade = 0; fade < 2; ++fade) {
        QVERIFY(WineDesktop::pointTo(kElsewhere));
        QCOMPARE(waitForBar(false, 0), QString());
        QVERIFY(WineDesktop::pointTo({kElsewhere.x(), 0}));
        QCOMPARE(waitForBar(true, kOpaque), QString());
    }
    const auto bar = WineDesktop::visibleWindow(kBarTitle, kTimeoutMs);
    QVERIFY(bar && bar->layer && bar->isTopmost);
    QCOMPARE(bar->layer->flags, kAlphaFlag);
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
}

/// Waits until the floating bar is shown, or is not, with this alpha. Empty on success, else what it had at last.
QString TestWin32Recording::waitForBar(bool shown, int alpha)
{
    QElapsedTimer waited;
    waited.start();
    QString last;
    do {
        last = QStringLiteral("no bar");
        const QList<WindowsWindow> windows = WineDesktop::windows();
        for (const WindowsWindow& window : windows)
            if (window.title == kBarTitle)
                last = QStringLiteral("visible %1, alpha %2")
                           .arg(window.isVisible)
                           .arg(window.layer ? window.layer->alpha : -1);
        if (last == QStringLiteral("visible %1, alpha %2").arg(shown).arg(alpha))
            return {};
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(kTimeoutMs));
    return last;
}

int64_t TestWin32Recording::bringAnotherToFront()
{
    const QList<WindowsWindow> windows = WineDesktop::windows();
    for (const WindowsWindow& window : windows)
        if (window.title == QLatin1String("Target"))
            return win32user::bringToFront(window) ? window.handle : 0;
    return 0;
}

void TestWin32Recording::theHeldWindowTakesNoFocusFromAnother()
{
    QProcess other;
    QCOMPARE(WineDesktop::launch(other, QStringLiteral("kestrano_test_win32probe"),
                                 {QStringLiteral("target"), QStringLiteral("20"), QStringLiteral("420"),
                                  QStringLiteral("100"), QStringLiteral("60")}),
             QString());
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, QStringLiteral("mp4"));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const auto held = Win32Program::mainWindowAsWindowsKnowsIt(true, kTimeoutMs);
    QVERIFY(held);
    const QStringList raiseHeld{QStringLiteral("raise"), QString::number(held->handle)};
    const int64_t another = bringAnotherToFront();
    QVERIFY(win32user::awaitFront(another));
    // The window has refused, or not, by the time of the answer.
    QVERIFY(WineDesktop::request(raiseHeld));
    QVERIFY(win32user::isInFront(another));
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

    // Afterwards the same request is obeyed.
    QVERIFY(bringAnotherToFront() == another);
    QVERIFY(win32user::awaitFront(another));
    QVERIFY(WineDesktop::request(raiseHeld));
    QVERIFY(win32user::awaitFront(held->handle));
    other.kill();
    other.waitForFinished();
}

REGISTER_TEST(testrun::gui<TestWin32Recording>);
#include "test_win32recording.moc"
