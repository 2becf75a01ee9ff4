// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/formatjudge.h"
#include "tests/recording/killjudge.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"
#include "tests/win32/win32program.h"

#include <QGuiApplication>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>

namespace {

/// Wine puts a window's drawing on the screen in pieces, and the recorder sees some frames in between.
constexpr formatjudge::Allowance kAllowance{.clockDrift = 0.15, .soundServer = 0.1, .tornFrames = 0.15};

} // namespace

/// Each format recorded by the Windows program through its hotkey, and judged as the Linux program's are.
class TestWin32Formats : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(m_desktop.begin(), QString());
        QCOMPARE(m_performance.begin(kFramesPerSecond), QString());
    }

    void aRecordingHoldsTheScreenAndTheMicrophone_data()
    {
        QTest::addColumn<int>("index");
        for (size_t index = 0; index < formatjudge::kFormats.size(); ++index)
            QTest::newRow(formatjudge::kFormats.at(index).name) << static_cast<int>(index);
    }

    void aRecordingHoldsTheScreenAndTheMicrophone()
    {
        constexpr int kRecordMs = 2500;
        QFETCH(int, index);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<size_t>(index));
        Win32Program program;
        // The sound of a process begins late, which the countdown covers.
        program.countDownInFull();
        program.setSetting(QStringLiteral("recording/format"), QLatin1String(expected.name));
        program.setSetting(QStringLiteral("recording/micSwitch"), true);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = record(program, QLatin1String(expected.extension), kRecordMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        formatjudge::check(expected, MediaFile(WineDesktop::unixPath(take.path)), take,
                           QGuiApplication::primaryScreen()->size(), kAllowance);
    }

    void aKilledRecordingPlaysUpToTheLastSeconds()
    {
        const formatjudge::Expected& expected = formatjudge::kFormats.front();
        Win32Program program;
        program.countDownInFull();
        program.setSetting(QStringLiteral("recording/micSwitch"), true);
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = beginTake(program, QLatin1String(expected.extension));
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(3000 + QRandomGenerator::global()->bounded(2000));
        const int64_t killedNs = monotonicNow();
        program.kill();
        QVERIFY(!program.isRunning());
        killjudge::check(expected, WineDesktop::unixPath(take.path), QGuiApplication::primaryScreen()->size(),
                         killedNs);
    }

private:
    WineDesktop m_desktop;
    WindowsPerformance m_performance;
};

REGISTER_TEST(testrun::gui<TestWin32Formats>);
#include "test_win32formats.moc"
