// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/minidump.h"
#include "tests/support/testrun.h"
#include "tests/win32/win32user.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>

namespace {

constexpr int kWindowTimeoutMs = 15'000;
constexpr int kEndTimeoutMs = 60'000;
constexpr int kRecordMs = 1000;
constexpr int kMinimise = 0xF020;
constexpr int kRestore = 0xF120;
constexpr int kMaximise = 0xF030;

/// Gives a system command; whether the window is minimised at once afterwards. Nothing when it was not obeyed.
std::optional<bool> isMinimisedAfter(const WindowsWindow& window, int systemCommand)
{
    const auto answer =
        WineDesktop::ask({QStringLiteral("command"), QString::number(window.handle), QString::number(systemCommand)});
    return answer ? std::optional(answer->toBool()) : std::nullopt;
}

} // namespace

/// The Windows program from its start to its end: what it stores, and what it does with other programs' requests.
class TestWin32Program : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_desktop.begin(), QString()); }

    void aFreshProfileGetsAllFifteenKeys();
    void aSecondCopyHandsTheFocusOverAndEnds();
    void aMinimisedWindowIsNotBroughtBackWhileRecording();
    void aHotkeyThatAnotherProgramHoldsIsNamedInTheLog();
    void aUserFolderWithOtherLettersHoldsAllBeyondTheOldLimitOfPaths();
    void anAccessViolationLeavesACrashReport();

private:
    WineDesktop m_desktop;
};

void TestWin32Program::aFreshProfileGetsAllFifteenKeys()
{
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const QStringList expected{"general/firstRun",       "general/language",       "hotkeys/recording",
                               "hotkeys/screenshot",     "mouse/showCursor",       "mouse/showHighlight",
                               "mouse/switch",           "recording/format",       "recording/micSwitch",
                               "recording/saveLocation", "recording/screenSwitch", "recording/speakerSwitch",
                               "recording/webcamSwitch", "screenshot/format",      "screenshot/saveLocation"};
    const QMap<QString, QString> stored = Win32Program::storedSettings();
    QCOMPARE(stored.keys(), expected);
    QCOMPARE(stored.value(QStringLiteral("hotkeys/recording")), QStringLiteral("F9"));
    QCOMPARE(stored.value(QStringLiteral("recording/webcamSwitch")), QStringLiteral("false"));
}

void TestWin32Program::aSecondCopyHandsTheFocusOverAndEnds()
{
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const auto shown = Win32Program::mainWindowAsWindowsKnowsIt(false, kWindowTimeoutMs);
    QVERIFY(shown);
    QCOMPARE(isMinimisedAfter(*shown, kMinimise), true);
    QVERIFY(Win32Program::mainWindowAsWindowsKnowsIt(true, kWindowTimeoutMs));

    QProcess second;
    second.start(QStringLiteral("wine"), {program.executable()});
    QVERIFY(second.waitForFinished(kEndTimeoutMs));
    QCOMPARE(second.exitCode(), 0);
    const auto restored = Win32Program::mainWindowAsWindowsKnowsIt(false, kWindowTimeoutMs);
    QVERIFY(restored);
    QCOMPARE(restored->handle, shown->handle);
    QVERIFY(restored->isForeground);
    QVERIFY(!restored->isTopmost);
    QCOMPARE(program.dataFolder().entryList({QStringLiteral("logs")}, QDir::Dirs).size(), 1);
    QCOMPARE(QDir(program.dataFolder().filePath(QStringLiteral("logs"))).entryList({"*.log"}, QDir::Files).size(), 1);
}

void TestWin32Program::aMinimisedWindowIsNotBroughtBackWhileRecording()
{
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, QStringLiteral("mp4"));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const auto held = Win32Program::mainWindowAsWindowsKnowsIt(true, kWindowTimeoutMs);
    QVERIFY(held);
    // Refused, not undone afterwards. The low four bits are the system's.
    for (const int request : {kRestore, kRestore + 2, kMaximise})
        QCOMPARE(isMinimisedAfter(*held, request), true);
    // Long enough for a file, and for a window that does come back to do so.
    QTest::qWait(kRecordMs);
    QVERIFY(Win32Program::mainWindowAsWindowsKnowsIt(true, 0));
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));

    // Afterwards it is a window like any other.
    QCOMPARE(isMinimisedAfter(*held, kMinimise), true);
    QVERIFY(Win32Program::mainWindowAsWindowsKnowsIt(true, kWindowTimeoutMs));
    QCOMPARE(isMinimisedAfter(*held, kRestore), false);
    QVERIFY(Win32Program::mainWindowAsWindowsKnowsIt(false, kWindowTimeoutMs));
}

void TestWin32Program::aHotkeyThatAnotherProgramHoldsIsNamedInTheLog()
{
    constexpr int kF9 = 0x78;
    QProcess holder;
    QCOMPARE(WineDesktop::launch(holder, QStringLiteral("kestrano_test_win32probe"),
                                 {QStringLiteral("hold"), QStringLiteral("0"), QString::number(kF9)}),
             QString());
    {
        Win32Program program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const QRegularExpression named(QStringLiteral("F9.*another program holds it"));
        QVERIFY2(program.logText().contains(named), qPrintable(program.logText()));
    }
    holder.kill();
    holder.waitForFinished();
}

void TestWin32Program::aUserFolderWithOtherLettersHoldsAllBeyondTheOldLimitOfPaths()
{
    // Windows wants the user's folders themselves within 260 characters; what lies in them need not be.
    constexpr int kOldLimit = 260;
    const QString name = QStringLiteral("Aufnahmen aus dem \u00dcbungsraum/").repeated(5) +
                         QStringLiteral("J\u00fcrgen M\u00f6ller \u9332\u753b");
    const QString saveFolder = QStringLiteral("Aufnahmen f\u00fcr Zo\u00eb/").repeated(8);
    Win32Program program(name);
    const QDir films(QDir::cleanPath(program.userFolder().filePath(saveFolder)));
    for (const char* key : {"recording/saveLocation", "screenshot/saveLocation"})
        program.setSetting(QLatin1String(key), WineDesktop::windowsPath(films.path()).replace('\\', '/'));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = record(program, QStringLiteral("mp4"), kRecordMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const MediaFile file(WineDesktop::unixPath(take.path));
    QVERIFY2(file.isReadable(), qPrintable(file.error()));
    QCOMPARE(QFileInfo(file.path()).dir(), films);
    QVERIFY(file.video() != nullptr && file.durationSeconds() > 0.5);
    QVERIFY(program.logText().contains(name.section(QLatin1Char('/'), -1)));
    QVERIFY(program.dataFolder().exists(QStringLiteral("file_data.json")));
    const QString log =
        WineDesktop::windowsPath(program.dataFolder().filePath(QStringLiteral("logs/vexmoor_yyyy-MM-dd_HH-mm-ss.log")));
    QVERIFY(take.path.size() > kOldLimit && log.size() > kOldLimit);

    win32user::press({QStringLiteral("F10")});
    QVERIFY(win32user::awaitScreenshotBar());
    win32user::press({QStringLiteral("Return")});
    const auto box = QStringLiteral("Screenshot Saved");
    QVERIFY(win32user::awaitReady(box));
    const QStringList shots = films.entryList({QStringLiteral("Screenshot_*.png")}, QDir::Files);
    QCOMPARE(shots.size(), 1);
    QCOMPARE(QImage(films.filePath(shots.constFirst())).size(), QGuiApplication::primaryScreen()->size());
    win32user::press({QStringLiteral("Return")});
    QVERIFY(win32user::awaitGone(box));
}

void TestWin32Program::anAccessViolationLeavesACrashReport()
{
    // What stands before the memory is well within this; a dump of the whole memory takes minutes under Wine.
    constexpr qint64 kEnoughBytes = 4'000'000;
    constexpr uint32_t kAccessViolation = 0xC0000005;
    Win32Program program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const auto window = Win32Program::mainWindowAsWindowsKnowsIt(false, kWindowTimeoutMs);
    QVERIFY(window && WineDesktop::request({QStringLiteral("crash"), QString::number(window->process)}));
    const QDir logs(program.dataFolder().filePath(QStringLiteral("logs")));
    QTRY_COMPARE_WITH_TIMEOUT(logs.entryList({"crash_*.dmp"}, QDir::Files).size(), 1, kWindowTimeoutMs);
    QFile report(logs.filePath(logs.entryList({"crash_*.dmp"}, QDir::Files).constFirst()));
    QTRY_VERIFY_WITH_TIMEOUT(report.size() > kEnoughBytes, kEndTimeoutMs);
    QVERIFY(report.open(QIODevice::ReadOnly));
    const Minidump dump(report.read(kEnoughBytes));
    program.kill();

    QVERIFY(dump.isMinidump());
    const auto exception = dump.exception();
    QVERIFY(exception.has_value());
    QCOMPARE(exception->code, kAccessViolation);
    QVERIFY(dump.threadIds().size() > 1 && dump.threadIds().contains(exception->threadId));
    const QStringList modules = dump.modules();
    for (const char* name : {"\\kestrano.exe", "\\obs.dll"})
        QVERIFY2(modules.filter(QLatin1String(name)).size() == 1, qPrintable(modules.join(QLatin1Char(' '))));
}

REGISTER_TEST(testrun::gui<TestWin32Program>);
#include "test_win32program.moc"
