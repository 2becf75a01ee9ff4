// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/minidump.h"
#include "tests/support/testrun.h"
#include "tests/unit/crashertest.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

constexpr uint32_t kAccessViolation = 0xC0000005;
constexpr uint32_t kStackOverflow = 0xC00000FD;

/// The head, and what stands before the memory, is well within this.
constexpr qint64 kEnoughBytes = 4'000'000;

} // namespace

class TestCrashReport : public QObject
{
    Q_OBJECT

private slots:
    void anUnhandledExceptionLeavesAMinidump()
    {
        const CrasherRun run("segv", kEnoughBytes);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        QVERIFY(run.folder().endsWith("/Tolvaran/Kestrano/logs"));
        const Minidump dump(run.report());
        QVERIFY(dump.isMinidump());
        QCOMPARE(dump.flags(), uint64_t{0x1027});
        const auto exception = dump.exception();
        QVERIFY(exception.has_value());
        QCOMPARE(exception->code, kAccessViolation);
        QVERIFY(dump.threadIds().contains(exception->threadId));
        const QStringList modules = dump.modules();
        QVERIFY2(std::any_of(modules.begin(), modules.end(),
                             [](const QString& path) { return path.endsWith("\\kestrano_test_crasher.exe"); }),
                 qPrintable(modules.join(' ')));
    }

    void anUncaughtExceptionLeavesAMinidump()
    {
        const CrasherRun run("throw", kEnoughBytes);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        const Minidump dump(run.report());
        QVERIFY(dump.isMinidump());
        QCOMPARE(dump.flags(), uint64_t{0x1027});
        // Nothing is known of where it was thrown.
        QVERIFY(!dump.exception());
    }

    void aCrashInAnotherThreadLeavesAMinidump()
    {
        const CrasherRun run("thread", kEnoughBytes);
        QVERIFY(run.isNamedAfterTheCrash());
        QVERIFY(Minidump(run.report()).exception().has_value());
    }

    void aStackThatHasRunOutLeavesAMinidump()
    {
        const CrasherRun run("overflow", kEnoughBytes);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        const Minidump dump(run.report());
        QVERIFY(dump.isMinidump());
        const auto exception = dump.exception();
        QVERIFY(exception.has_value());
        QCOMPARE(exception->code, kStackOverflow);
        QVERIFY(dump.threadIds().contains(exception->threadId));
    }

    void noFileMeansSilentlyNoReport()
    {
        const QString folder = CrasherRun("none").folder();
        QVERIFY(QDir(folder).exists());
        QVERIFY(QDir(folder).removeRecursively());
        // A file stands where the folder should be.
        QFile blocker(folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const CrasherRun run("segv");
        blocker.close();
        QVERIFY(blocker.remove());
        QVERIFY(run.reportNames().isEmpty());
        QCOMPARE(run.folder(), folder);
        QCOMPARE(run.exitStatus(), QProcess::CrashExit);
    }

    void folderMayBeOfAnyLengthAndInAnyScript()
    {
        const QTemporaryDir root;
        const QString folder = root.path() + QStringLiteral("/Jürgen Möller/録画 и снимки") +
                               QStringLiteral("/Aufnahmen aus dem Übungsraum").repeated(10);
        QVERIFY(folder.size() > 300);
        QVERIFY(QDir().mkpath(folder));
        const CrasherRun run = CrasherRun::into(folder, "segv", kEnoughBytes);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        QVERIFY(Minidump(run.report()).isMinidump());
    }

    void withoutACrashThereIsNoReport()
    {
        const CrasherRun run("none");
        QVERIFY(QDir(run.folder()).exists());
        QVERIFY(run.reportNames().isEmpty());
        QCOMPARE(run.exitCode(), 0);
    }
};

REGISTER_TEST(testrun::core<TestCrashReport>);
#include "test_crashreport_win.moc"
