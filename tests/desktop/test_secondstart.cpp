#include "app/singleinstance.h"
#include "tests/desktop/startedcopy.h"
#include "tests/support/testrun.h"
#include "tests/support/watchedwindow.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QTest>
#include <QWidget>

#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr int kTimeoutMs = 20'000;
constexpr int kDozen = 12;

/// The window the window manager manages for the copy; id 0 while there is none.
x11clients::Window mainWindowOf(const StartedCopy& copy)
{
    const QList<x11clients::Window> windows = x11clients::windowsOf(copy.processId());
    return windows.value(0);
}

int countMessages(StartedCopy& copy, const QString& text)
{
    return static_cast<int>(copy.messages().filter(text).size());
}

/// Pipes under the names that the log of a copy started now may get.
QStringList putPipesInPlaceOfTheLog(const Profile& profile)
{
    constexpr int kSeconds = 60;
    QStringList paths;
    QDir().mkpath(profile.logFolder().path());
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < kSeconds; ++second) {
        const QString name = now.addSecs(second).toString("'vexmoor_'yyyy-MM-dd_HH-mm-ss'.log'");
        paths.append(profile.logFolder().filePath(name));
        if (mkfifo(QFile::encodeName(paths.constLast()).constData(), S_IRUSR | S_IWUSR) != 0)
            return {};
    }
    return paths;
}

using Copies = std::vector<std::unique_ptr<StartedCopy>>;

/// Twelve copies that get away in the same moment; fewer when not all of them came to the start.
Copies startDozen(const Profile& profile)
{
    Copies copies;
    copies.reserve(kDozen);
    for (int copy = 0; copy < kDozen; ++copy)
        copies.push_back(std::make_unique<StartedCopy>(profile, StartedCopy::Start::Held));
    copies.erase(std::remove_if(copies.begin(), copies.end(), [](const auto& copy) { return !copy->waitUntilHeld(); }),
                 copies.end());
    for (const auto& copy : copies)
        copy->release();
    return copies;
}

int countRunning(const Copies& copies)
{
    return static_cast<int>(
        std::count_if(copies.begin(), copies.end(), [](const auto& copy) { return copy->isRunning(); }));
}

} // namespace

/// The program started while another copy of it runs, starts or died.
class TestSecondStart : public QObject
{
    Q_OBJECT

private:
    /// Starts a dozen at the same moment and sees all but one of them end.
    static void expectOneOfADozen(const Profile& profile)
    {
        const Copies copies = startDozen(profile);
        QCOMPARE(copies.size(), std::size_t{kDozen});
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

private slots:
    void aSecondStartRestoresRaisesAndActivatesTheMinimisedWindow()
    {
        const Profile profile;
        StartedCopy first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const uint32_t window = mainWindowOf(first).id;
        x11clients::minimise(window);
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).isMinimised, kTimeoutMs);

        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::activeWindow(), static_cast<uint32_t>(other.winId()), kTimeoutMs);

        StartedCopy second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(second.messages().isEmpty(), qPrintable(second.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(!mainWindowOf(first).isMinimised, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::activeWindow(), window, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::topmostWindow(), window, kTimeoutMs);
        QVERIFY(!x11clients::statesOf(window).contains("_NET_WM_STATE_ABOVE"));
        QTRY_VERIFY_WITH_TIMEOUT(!x11clients::statesOf(window).contains("_NET_WM_STATE_DEMANDS_ATTENTION"), kTimeoutMs);
        QCOMPARE(profile.logFiles().size(), 1);
    }

    void aSecondStartRaisesACoveredWindow()
    {
        const Profile profile;
        StartedCopy first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const x11clients::Window before = mainWindowOf(first);
        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::topmostWindow(), static_cast<uint32_t>(other.winId()), kTimeoutMs);

        StartedCopy second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::topmostWindow(), before.id, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::activeWindow(), before.id, kTimeoutMs);
        QCOMPARE(mainWindowOf(first).geometry, before.geometry);
    }

    void aSecondStartRestoresRaisesActivatesAndFlashesInThisOrder()
    {
        // This process is the first copy, with a window that no window manager looks after.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        WatchedWindow window;
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        first.publish(window.id(), QCoreApplication::applicationPid());
        StartedCopy second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(window.events(), QStringList({"shown", "_NET_WM_STATE add _NET_WM_STATE_ABOVE",
                                               "_NET_WM_STATE remove _NET_WM_STATE_ABOVE", "_NET_ACTIVE_WINDOW",
                                               "_NET_WM_STATE add _NET_WM_STATE_DEMANDS_ATTENTION"}));
    }

    void aSecondStartDuringTheFirstOnesStartEndsWithoutAWindow()
    {
        // This process is the first copy, and takes its time before it shows a window.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        StartedCopy second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(second.transcript().contains("[ERROR] Stored window handle is invalid"),
                 qPrintable(second.transcript()));
        QVERIFY(profile.logFiles().isEmpty());
    }

    void withoutItsLockFileTheRunningInstanceIsStillTheFirst()
    {
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        WatchedWindow window;
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        first.publish(window.id(), QCoreApplication::applicationPid());
        const QStringList locks = QDir::temp().entryList({"*.lock"}, QDir::Files);
        QCOMPARE(locks.size(), 2);
        for (const QString& lock : locks)
            QVERIFY(QDir::temp().remove(lock));
        SingleInstance second;
        QCOMPARE(second.claim(), SingleInstance::Role::Second);
    }

    void aDozenAtOnceLeaveExactlyOne()
    {
        const Profile profile;
        expectOneOfADozen(profile);
        QCOMPARE(profile.logFiles().size(), 1);
    }

    void aDozenAtOnceAfterAKillLeaveExactlyOne()
    {
        const Profile profile;
        StartedCopy killed(profile);
        QVERIFY2(killed.waitUntilPublished(), qPrintable(killed.transcript()));
        killed.sendSignal(SIGKILL);
        QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
        expectOneOfADozen(profile);
    }

    void aStartAfterAKillIsTheFirstCopyAgain()
    {
        const Profile profile;
        {
            StartedCopy killed(profile);
            QVERIFY2(killed.waitUntilPublished(), qPrintable(killed.transcript()));
            killed.sendSignal(SIGKILL);
            QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
        }
        StartedCopy next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
        QCOMPARE(countMessages(next, "[INFO] Created shared memory for single instance"), 1);
    }

    void aStartAfterAKillBeforeTheProcessIdWasStored()
    {
        const Profile profile;
        // Nobody reads from the pipes that stand where the log would be: the copy does not get past opening it.
        const QStringList pipes = putPipesInPlaceOfTheLog(profile);
        QVERIFY(!pipes.isEmpty());
        {
            StartedCopy killed(profile);
            QVERIFY2(killed.waitForMessage("Created shared memory for single instance"),
                     qPrintable(killed.transcript()));
            killed.sendSignal(SIGKILL);
            QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
            QCOMPARE(countMessages(killed, "Stored window handle"), 0);
        }
        for (const QString& pipe : pipes)
            QVERIFY(QFile::remove(pipe));
        StartedCopy next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
        QCOMPARE(countMessages(next, "[INFO] Created shared memory for single instance"), 1);
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
};

REGISTER_TEST(testrun::gui<TestSecondStart>);
#include "test_secondstart.moc"
