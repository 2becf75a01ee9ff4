#include "tests/unit/crashertest.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>

namespace {

/// The 64-bit flags in the head of a minidump.
quint64 dumpFlags(const QByteArray& dump)
{
    constexpr int kFlagsOffset = 24;
    quint64 flags = 0;
    if (dump.size() >= kFlagsOffset + static_cast<int>(sizeof(flags)))
        std::memcpy(&flags, dump.constData() + kFlagsOffset, sizeof(flags));
    return flags;
}

quint32 numberAt(const QByteArray& dump, quint32 offset)
{
    quint32 number = 0;
    if (offset + sizeof(number) <= static_cast<quint32>(dump.size()))
        std::memcpy(&number, dump.constData() + offset, sizeof(number));
    return number;
}

/// Whether the dump's directory has a stream of a type.
bool hasStream(const QByteArray& dump, quint32 type)
{
    const quint32 count = numberAt(dump, 8);
    const quint32 directory = numberAt(dump, 12);
    for (quint32 index = 0; index < count; ++index) {
        if (numberAt(dump, directory + index * 12) == type)
            return true;
    }
    return false;
}

constexpr quint32 kExceptionStream = 6;

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
        QVERIFY(run.report().startsWith("MDMP"));
        QCOMPARE(dumpFlags(run.report()), quint64{0x1027});
        QVERIFY(hasStream(run.report(), kExceptionStream));
    }

    void anUncaughtExceptionLeavesAMinidump()
    {
        const CrasherRun run("throw", kEnoughBytes);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        QVERIFY(run.report().startsWith("MDMP"));
        QCOMPARE(dumpFlags(run.report()), quint64{0x1027});
        // Nothing is known of where it was thrown.
        QVERIFY(!hasStream(run.report(), kExceptionStream));
    }

    void aCrashInAnotherThreadLeavesAMinidump()
    {
        const CrasherRun run("thread", kEnoughBytes);
        QVERIFY(run.isNamedAfterTheCrash());
        QVERIFY(hasStream(run.report(), kExceptionStream));
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
        QVERIFY(run.report().startsWith("MDMP"));
    }

    void withoutACrashThereIsNoReport()
    {
        const CrasherRun run("none");
        QVERIFY(QDir(run.folder()).exists());
        QVERIFY(run.reportNames().isEmpty());
        QCOMPARE(run.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestCrashReport)
#include "test_crashreport_win.moc"
