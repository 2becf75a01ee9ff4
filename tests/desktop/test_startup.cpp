#include "app/singleinstance.h"
#include "tests/desktop/startedcopy.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int kTimeoutMs = 20'000;

QString outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(kTimeoutMs);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// The window the window manager manages for the copy; id 0 while there is none.
x11clients::Window mainWindowOf(const StartedCopy& copy)
{
    const QList<x11clients::Window> windows = x11clients::windowsOf(copy.processId());
    return windows.value(0);
}

quint64 activeWindow()
{
    return outputOf("xdotool", {"getactivewindow"}).toULongLong();
}

QString windowState(quint64 window)
{
    return outputOf("xprop", {"-id", QString::number(window), "_NET_WM_STATE"});
}

quint64 topmostWindow()
{
    const QString stacking = outputOf("xprop", {"-root", "_NET_CLIENT_LIST_STACKING"});
    return stacking.mid(stacking.lastIndexOf(' ') + 1).toULongLong(nullptr, 16);
}

int countMessages(StartedCopy& copy, const QString& text)
{
    return static_cast<int>(copy.messages().filter(text).size());
}

/// The id of a process that has ended.
qint64 endedProcess()
{
    QProcess process;
    process.start("sleep", {"0"});
    process.waitForStarted(kTimeoutMs);
    const qint64 id = process.processId();
    process.waitForFinished(kTimeoutMs);
    return id;
}

/// System V segments of memory, which outlast their maker unless it removes them.
qsizetype countSegmentsMadeBy(qint64 processId)
{
    constexpr qsizetype kCreatorColumn = 4;
    QFile table("/proc/sysvipc/shm");
    if (!table.open(QIODevice::ReadOnly))
        return -1;
    const QStringList lines = QString::fromLatin1(table.readAll()).split(u'\n');
    return std::count_if(lines.begin(), lines.end(), [processId](const QString& line) {
        return line.simplified().section(u' ', kCreatorColumn, kCreatorColumn) == QString::number(processId);
    });
}

using Copies = std::vector<std::unique_ptr<StartedCopy>>;

Copies startDozen(const Profile& profile)
{
    Copies copies;
    copies.reserve(12);
    for (int copy = 0; copy < 12; ++copy)
        copies.push_back(std::make_unique<StartedCopy>(profile));
    return copies;
}

int countRunning(const Copies& copies)
{
    return static_cast<int>(
        std::count_if(copies.begin(), copies.end(), [](const auto& copy) { return copy->isRunning(); }));
}

} // namespace

/// The program as a user starts it: alone, twice, a dozen times, after a crash, and in broken surroundings.
class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void aSecondStartRestoresRaisesAndActivatesTheMinimisedWindow()
    {
        const Profile profile;
        StartedCopy first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const quint64 window = mainWindowOf(first).id;
        outputOf("xdotool", {"windowminimize", QString::number(window)});
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).isMinimised, kTimeoutMs);

        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(activeWindow(), quint64{other.winId()}, kTimeoutMs);

        StartedCopy second(profile);
        QVERIFY(second.waitUntilEnded());
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(second.messages().isEmpty(), qPrintable(second.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(!mainWindowOf(first).isMinimised, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(activeWindow(), window, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(topmostWindow(), window, kTimeoutMs);
        QVERIFY2(!windowState(window).contains("ABOVE"), qPrintable(windowState(window)));
        QTRY_VERIFY_WITH_TIMEOUT(!windowState(window).contains("DEMANDS_ATTENTION"), kTimeoutMs);
        QCOMPARE(profile.logFiles().size(), 1);
    }

    void aSecondStartRaisesACoveredWindow()
    {
        const Profile profile;
        StartedCopy first(profile);
        QVERIFY(first.waitUntilPublished());
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const x11clients::Window before = mainWindowOf(first);
        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(topmostWindow(), quint64{other.winId()}, kTimeoutMs);

        StartedCopy second(profile);
        QVERIFY(second.waitUntilEnded());
        QCOMPARE(second.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(topmostWindow(), quint64{before.id}, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(activeWindow(), quint64{before.id}, kTimeoutMs);
        QCOMPARE(mainWindowOf(first).geometry, before.geometry);
    }

    void aSecondStartDuringTheFirstOnesStartEndsWithoutAWindow()
    {
        // This process is the first copy, and takes its time before it shows a window.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        StartedCopy second(profile);
        QVERIFY(second.waitUntilEnded());
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(second.transcript().contains("[ERROR] Stored window handle is invalid"),
                 qPrintable(second.transcript()));
        QVERIFY(profile.logFiles().isEmpty());
    }

    void aDeadCopysWindowIsNotHandedOverTo()
    {
        // As if this process had started after a crash and not yet replaced the segment, and a window of another
        // program had been given the dead copy's handle.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        SingleInstance starting;
        QCOMPARE(starting.claim(), SingleInstance::Role::First);
        QWidget covered;
        covered.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(topmostWindow(), quint64{covered.winId()}, kTimeoutMs);
        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(topmostWindow(), quint64{other.winId()}, kTimeoutMs);
        starting.publish(covered.winId(), endedProcess());

        StartedCopy second(profile);
        QVERIFY(second.waitUntilEnded());
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(second.transcript().contains("[ERROR] Stored window handle is invalid"),
                 qPrintable(second.transcript()));
        QCOMPARE(topmostWindow(), quint64{other.winId()});
    }

    void aSegmentOfADeadCopyIsWaitedOut()
    {
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        SingleInstance starting;
        QCOMPARE(starting.claim(), SingleInstance::Role::First);
        starting.publish(1, endedProcess());
        QElapsedTimer waited;
        waited.start();
        std::thread publisher([&starting] {
            QThread::msleep(300);
            starting.publish(1, QCoreApplication::applicationPid());
        });
        SingleInstance second;
        const SingleInstance::Role role = second.claim();
        publisher.join();
        QCOMPARE(role, SingleInstance::Role::Second);
        QVERIFY2(waited.elapsed() >= 300, qPrintable(QString::number(waited.elapsed())));
        QVERIFY2(waited.elapsed() < 1000, qPrintable(QString::number(waited.elapsed())));
    }

    void aDozenAtOnceLeaveExactlyOne()
    {
        const Profile profile;
        const Copies copies = startDozen(profile);
        QTRY_COMPARE_WITH_TIMEOUT(countRunning(copies), 1, 60'000);
        for (const auto& copy : copies) {
            if (copy->isRunning())
                QVERIFY2(copy->waitUntilPublished(), qPrintable(copy->transcript()));
            else
                QCOMPARE(copy->exitCode(), 0);
        }
        QCOMPARE(countRunning(copies), 1);
        QCOMPARE(profile.logFiles().size(), 1);
    }

    void aDozenAtOnceAfterAKillLeaveExactlyOne()
    {
        const Profile profile;
        StartedCopy killed(profile);
        QVERIFY(killed.waitUntilPublished());
        killed.sendSignal(SIGKILL);
        QVERIFY(killed.waitUntilEnded());
        const Copies copies = startDozen(profile);
        QTRY_COMPARE_WITH_TIMEOUT(countRunning(copies), 1, 60'000);
        for (const auto& copy : copies) {
            if (copy->isRunning())
                QVERIFY2(copy->waitUntilPublished(), qPrintable(copy->transcript()));
            else
                QCOMPARE(copy->exitCode(), 0);
            QCOMPARE(countMessages(*copy, "Unable to create shared memory"), 0);
        }
        QCOMPARE(countRunning(copies), 1);
    }

    void aStartAfterAKillIsTheFirstCopyAgain()
    {
        const Profile profile;
        {
            StartedCopy killed(profile);
            QVERIFY(killed.waitUntilPublished());
            killed.sendSignal(SIGKILL);
            QVERIFY(killed.waitUntilEnded());
        }
        StartedCopy next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
        QCOMPARE(countMessages(next, "[INFO] Created shared memory for single instance"), 1);
    }

    void aStartAfterAKillBeforeTheProcessIdWasStored()
    {
        const Profile profile;
        {
            StartedCopy killed(profile);
            QVERIFY(killed.waitForMessage("Created shared memory for single instance"));
            killed.sendSignal(SIGKILL);
            QVERIFY(killed.waitUntilEnded());
            QCOMPARE(countMessages(killed, "Stored window handle"), 0);
        }
        StartedCopy next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
    }

    void withoutASegmentTheProgramRunsUnguarded()
    {
        Profile profile;
        profile.environment.insert("TMPDIR", "/proc");
        StartedCopy first(profile);
        QVERIFY2(first.waitForMessage("Main window displayed"), qPrintable(first.transcript()));
        QCOMPARE(countMessages(first, "[ERROR] Unable to create shared memory: "), 1);
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        QCOMPARE(countMessages(first, "Stored window handle"), 0);
        StartedCopy second(profile);
        QVERIFY2(second.waitForMessage("Main window displayed"), qPrintable(second.transcript()));
    }

    void theStepsComeInTheirOrder()
    {
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(copy.exitCode(), 0);
        const QString path = profile.logFolder().filePath(profile.logFiles().value(0));
        const QStringList steps{"=== Application Started ===",
                                "Log file initialized: " + path,
                                "Logger initialized successfully",
                                "Log file: " + path,
                                "Application starting...",
                                "System locale: C",
                                "Loaded fallback translation (en_US)",
                                "Creating main window...",
                                "Main window displayed",
                                "Stored window handle and process ID in shared memory",
                                "Application exiting..."};
        QStringList logged;
        for (const QString& message : profile.loggedMessages()) {
            if (steps.contains(message))
                logged.append(message);
        }
        QCOMPARE(logged, steps);
    }

    void eachStartHasALogFileOfItsOwn()
    {
        const Profile profile;
        QVERIFY(!profile.logFolder().exists());
        for (int start = 1; start <= 2; ++start) {
            StartedCopy copy(profile);
            QVERIFY(copy.waitUntilPublished());
            QCOMPARE(profile.logFiles().size(), start);
            copy.sendSignal(SIGTERM);
            QVERIFY(copy.waitUntilEnded());
            QTest::qWait(1000); // file names have seconds
        }
    }

    void aSystemLocaleWithoutATranslationFallsBackToEnglish()
    {
        Profile profile;
        profile.environment.insert("LC_ALL", "sv_SE.UTF-8");
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        const QStringList messages = profile.loggedMessages();
        const qsizetype locale = messages.indexOf("System locale: sv_SE");
        QVERIFY2(locale >= 0, qPrintable(messages.join('\n')));
        QCOMPARE(messages.value(locale + 1), QString("Loaded fallback translation (en_US)"));
    }

    void anUnknownStoredLanguageFallsBackToEnglish()
    {
        const Profile profile;
        profile.writeSettings("[general]\nfirstRun=false\nlanguage=\"fr_FR\"\n");
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        QCOMPARE(countMessages(copy, "Loaded fallback translation (en_US)"), 1);
        QCOMPARE(countMessages(copy, "System locale:"), 0);
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(profile.settings().value("general/language").toString(), QString("fr_FR"));
    }

    void theSecondRunUsesTheStoredLanguage()
    {
        Profile profile;
        profile.environment.insert("LC_ALL", "sv_SE.UTF-8");
        for (const char* const expected : {"System locale: sv_SE", "Loaded translation for: en_US"}) {
            StartedCopy copy(profile);
            QVERIFY(copy.waitUntilPublished());
            QCOMPARE(countMessages(copy, expected), 1);
            copy.sendSignal(SIGTERM);
            QVERIFY(copy.waitUntilEnded());
        }
        QCOMPARE(profile.settings().value("general/language").toString(), QString("en_US"));
    }

    void aFreshProfileGetsAllFifteenSettings()
    {
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        const QMap<QString, QVariant> settings = profile.settings();
        QCOMPARE(settings.size(), 15);
        QCOMPARE(settings.value("general/firstRun"), QVariant(false));
        QCOMPARE(settings.value("recording/webcamSwitch"), QVariant(false));
        QCOMPARE(settings.value("recording/format"), QVariant(QString("MP4")));
    }

    void aStoredFormatOutsideItsTableIsLeftAlone()
    {
        const Profile profile;
        profile.writeSettings("[recording]\nformat=\"MKV\"\nwebcamSwitch=false\n");
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(copy.exitCode(), 0);
        QCOMPARE(profile.settings().value("recording/format").toString(), QString("MKV"));
        QCOMPARE(profile.settings().size(), 15);
    }

    void onlyTheDeletedSettingIsRestored()
    {
        const Profile profile;
        profile.writeSettings("[general]\nfirstRun=false\n[mouse]\nshowHighlight=false\nswitch=false\n");
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        const QMap<QString, QVariant> settings = profile.settings();
        QCOMPARE(settings.value("mouse/showCursor"), QVariant(true));
        QCOMPARE(settings.value("mouse/showHighlight"), QVariant(false));
        QCOMPARE(settings.value("mouse/switch"), QVariant(false));
    }

    void aLogFolderThatCannotBeMadeIsSaidOnStandardError()
    {
        const Profile profile;
        QVERIFY(QDir().mkpath(QFileInfo(profile.logFolder().path()).path()));
        QFile blocker(profile.logFolder().path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        StartedCopy copy(profile);
        QVERIFY2(copy.waitUntilPublished(), qPrintable(copy.transcript()));
        QVERIFY(copy.messages().contains("Failed to initialize logger"));
        QVERIFY(countMessages(copy, "Failed to open log file:") >= 1);
    }

    void settingsThatCannotBeWrittenAreSaidInTheLog()
    {
        const Profile profile;
        QFile blocker(QFileInfo(profile.settingsPath()).path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        StartedCopy copy(profile);
        QVERIFY2(copy.waitUntilPublished(), qPrintable(copy.transcript()));
        QCOMPARE(profile.loggedMessages().filter("cannot be written").size(), 1);
    }

    void anEndAskedForBySignalIsOrderly_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void anEndAskedForBySignalIsOrderly()
    {
        QFETCH(const int, signal);
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        QTest::qWait(200); // into the event loop
        copy.sendSignal(signal);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(copy.exitCode(), 0);
        QVERIFY(profile.loggedMessages().contains("Application exiting..."));
    }

    void anOrderlyEndLeavesNoSharedMemoryBehind()
    {
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitForMessage("OBS initialized successfully"));
        const qint64 processId = copy.processId();
        QTRY_VERIFY_WITH_TIMEOUT(countSegmentsMadeBy(processId) >= 2, kTimeoutMs); // the guard's and a capture's
        copy.sendSignal(SIGTERM);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(countSegmentsMadeBy(processId), 0);
    }

    void closingTheWindowEndsTheProgram()
    {
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(copy).id != 0, kTimeoutMs);
        x11clients::close(mainWindowOf(copy).id);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(copy.exitCode(), 0);
        QVERIFY(profile.loggedMessages().contains("Application exiting..."));
        StartedCopy next(profile);
        QVERIFY(next.waitUntilPublished());
    }

    void aCrashLeavesAReportNextToTheLog()
    {
        const Profile profile;
        StartedCopy copy(profile);
        QVERIFY(copy.waitUntilPublished());
        copy.sendSignal(SIGSEGV);
        QVERIFY(copy.waitUntilEnded());
        QCOMPARE(copy.exitCode(), -1);
        const QStringList reports = profile.logFolder().entryList({"crash_*.dmp"}, QDir::Files);
        QCOMPARE(reports.size(), 1);
        QVERIFY(QRegularExpression("^crash_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.dmp$")
                    .match(reports.first())
                    .hasMatch());
        QFile report(profile.logFolder().filePath(reports.first()));
        QVERIFY(report.open(QIODevice::ReadOnly));
        QVERIFY(report.readAll().endsWith("End of report\n"));
    }
};

QTEST_MAIN(TestStartup)
#include "test_startup.moc"
