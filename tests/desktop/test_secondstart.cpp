// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"
#include "tests/desktop/startedinstance.h"
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

/// The window the window manager manages for the instance; id 0 while there is none.
x11clients::Window mainWindowOf(const StartedInstance& instance)
{
    const QList<x11clients::Window> windows = x11clients::windowsOf(instance.processId());
    return windows.value(0);
}

int countMessages(StartedInstance& instance, const QString& text)
{
    return static_cast<int>(instance.messages().filter(text).size());
}

/// Pipes under the names that the log of an instance started now may get.
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

using Instances = std::vector<std::unique_ptr<StartedInstance>>;

/// Twelve instances that get away in the same moment; fewer when not all of them came to the start.
Instances startDozen(const Profile& profile)
{
    Instances instances;
    instances.reserve(kDozen);
    for (int instance = 0; instance < kDozen; ++instance)
        instances.push_back(std::make_unique<StartedInstance>(profile, StartedInstance::Start::Held));
    instances.erase(std::remove_if(instances.begin(), instances.end(),
                                   [](const auto& instance) { return !instance->waitUntilHeld(); }),
                    instances.end());
    for (const auto& instance : instances)
        instance->release();
    return instances;
}

int countRunning(const Instances& instances)
{
    return static_cast<int>(
        std::count_if(instances.begin(), instances.end(), [](const auto& instance) { return instance->isRunning(); }));
}

} // namespace

/// The program started while another instance of it runs, starts or died.
class TestSecondStart : public QObject
{
    Q_OBJECT

private:
    /// Starts a dozen at the same moment and sees all but one of them end.
    static void expectOneOfADozen(const Profile& profile)
    {
        const Instances instances = startDozen(profile);
        QCOMPARE(instances.size(), std::size_t{kDozen});
        QTRY_COMPARE_WITH_TIMEOUT(countRunning(instances), 1, 60'000);
        for (const auto& instance : instances) {
            if (instance->isRunning())
                QVERIFY2(instance->waitUntilPublished(), qPrintable(instance->transcript()));
            else
                QCOMPARE(instance->exitCode(), 0);
            QCOMPARE(countMessages(*instance, "Unable to create shared memory"), 0);
        }
        QCOMPARE(countRunning(instances), 1);
    }

private slots:
    void aSecondStartRestoresRaisesAndActivatesTheMinimisedWindow()
    {
        const Profile profile;
        StartedInstance first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const uint32_t window = mainWindowOf(first).id;
        x11clients::minimise(window);
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).isMinimised, kTimeoutMs);

        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::activeWindow(), static_cast<uint32_t>(other.winId()), kTimeoutMs);

        StartedInstance second(profile);
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
        StartedInstance first(profile);
        QVERIFY2(first.waitUntilPublished(), qPrintable(first.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        const x11clients::Window before = mainWindowOf(first);
        QWidget other;
        other.showMaximized();
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::topmostWindow(), static_cast<uint32_t>(other.winId()), kTimeoutMs);

        StartedInstance second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::topmostWindow(), before.id, kTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(x11clients::activeWindow(), before.id, kTimeoutMs);
        QCOMPARE(mainWindowOf(first).geometry, before.geometry);
    }

    void aSecondStartRestoresRaisesActivatesAndFlashesInThisOrder()
    {
        // This process is the first instance, with a window that no window manager looks after.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        WatchedWindow window;
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        first.publish(window.id(), QCoreApplication::applicationPid());
        StartedInstance second(profile);
        QVERIFY2(second.waitUntilEnded(), qPrintable(second.transcript()));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(window.events(), QStringList({"shown", "_NET_WM_STATE add _NET_WM_STATE_ABOVE",
                                               "_NET_WM_STATE remove _NET_WM_STATE_ABOVE", "_NET_ACTIVE_WINDOW",
                                               "_NET_WM_STATE add _NET_WM_STATE_DEMANDS_ATTENTION"}));
    }

    void aSecondStartDuringTheFirstOnesStartEndsWithoutAWindow()
    {
        // This process is the first instance, and takes its time before it shows a window.
        const Profile profile;
        const InTemporaryFolderOf profilesFolder(profile);
        SingleInstance first;
        QCOMPARE(first.claim(), SingleInstance::Role::First);
        StartedInstance second(profile);
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
        StartedInstance killed(profile);
        QVERIFY2(killed.waitUntilPublished(), qPrintable(killed.transcript()));
        killed.sendSignal(SIGKILL);
        QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
        expectOneOfADozen(profile);
    }

    void aStartAfterAKillIsTheFirstInstanceAgain()
    {
        const Profile profile;
        {
            StartedInstance killed(profile);
            QVERIFY2(killed.waitUntilPublished(), qPrintable(killed.transcript()));
            killed.sendSignal(SIGKILL);
            QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
        }
        StartedInstance next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
        QCOMPARE(countMessages(next, "[INFO] Created shared memory for single instance"), 1);
    }

    void aStartAfterAKillBeforeTheProcessIdWasStored()
    {
        const Profile profile;
        // Nobody reads from the pipes that stand where the log would be: the instance does not get past opening it.
        const QStringList pipes = putPipesInPlaceOfTheLog(profile);
        QVERIFY(!pipes.isEmpty());
        {
            StartedInstance killed(profile);
            QVERIFY2(killed.waitForMessage("Created shared memory for single instance"),
                     qPrintable(killed.transcript()));
            killed.sendSignal(SIGKILL);
            QVERIFY2(killed.waitUntilEnded(), qPrintable(killed.transcript()));
            QCOMPARE(countMessages(killed, "Stored window handle"), 0);
        }
        for (const QString& pipe : pipes)
            QVERIFY(QFile::remove(pipe));
        StartedInstance next(profile);
        QVERIFY2(next.waitUntilPublished(), qPrintable(next.transcript()));
        QCOMPARE(countMessages(next, "[INFO] Created shared memory for single instance"), 1);
    }

    void withoutASegmentTheProgramRunsUnguarded()
    {
        Profile profile;
        profile.environment.insert("TMPDIR", "/proc");
        StartedInstance first(profile);
        QVERIFY2(first.waitForMessage("Main window displayed"), qPrintable(first.transcript()));
        QCOMPARE(countMessages(first, "[ERROR] Unable to create shared memory: "), 1);
        QTRY_VERIFY_WITH_TIMEOUT(mainWindowOf(first).id != 0, kTimeoutMs);
        QCOMPARE(countMessages(first, "Stored window handle"), 0);
        StartedInstance second(profile);
        QVERIFY2(second.waitForMessage("Main window displayed"), qPrintable(second.transcript()));
    }
};

REGISTER_TEST(testrun::gui<TestSecondStart>);
#include "test_secondstart.moc"
