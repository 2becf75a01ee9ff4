// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/crash_report.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"
#include "tests/unit/crashertest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <sys/stat.h>

namespace {

/// The lines from a heading to the next empty line.
QByteArray section(const QByteArray& report, const QByteArray& heading)
{
    const qsizetype start = report.indexOf(heading);
    return start < 0 ? QByteArray() : report.mid(start, report.indexOf("\n\n", start) - start);
}

/// Whether the process sleeps in its handler of that signal, which holds the signal back.
bool waitsInReport(qint64 processId, int signal)
{
    QFile file(QString("/proc/%1/status").arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray status = file.readAll();
    const qsizetype mask = status.indexOf("SigBlk:") + 7;
    const quint64 heldBack = status.mid(mask, status.indexOf('\n', mask) - mask).trimmed().toULongLong(nullptr, 16);
    return status.contains("State:\tS") && (heldBack >> (signal - 1) & 1) != 0;
}

} // namespace

class TestCrashReport : public QObject
{
    Q_OBJECT

private:
    TestProfile* m_profile;

public:
    explicit TestCrashReport(TestProfile* profile) : m_profile(profile) {}

private:
    /// Nobody reads from the pipes that stand where the report's file would be made.
    void makeReportsHang()
    {
        const QString folder = m_profile->path() + "/home/.qttest/share/Tolvaran/Kestrano/logs";
        QVERIFY(QDir().mkpath(folder));
        const QDateTime now = QDateTime::currentDateTime();
        for (int second = 0; second < 20; ++second) {
            const QString path = folder + now.addSecs(second).toString("'/crash_'yyyy-MM-dd_HH-mm-ss'.dmp'");
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), S_IRUSR | S_IWUSR), 0);
        }
    }

private slots:
    void init() { QVERIFY(QDir(m_profile->path() + "/home").removeRecursively()); }

    void aCrashIsReportedAndTakesItsUsualCourse_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<int>("signal");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("invalid access") << "segv" << SIGSEGV << QByteArray("Address: 0x10\n");
        QTest::newRow("abort") << "abort" << SIGABRT << QByteArray("SIGABRT (Aborted)\n");
        QTest::newRow("arithmetic") << "fpe" << SIGFPE << QByteArray("SIGFPE (Floating point exception)\n");
        QTest::newRow("instruction") << "ill" << SIGILL << QByteArray("SIGILL (Illegal instruction)\n");
        QTest::newRow("uncaught exception") << "throw" << SIGABRT << QByteArray("SIGABRT (Aborted)\n");
        QTest::newRow("stack overflow") << "overflow" << SIGSEGV << QByteArray("SIGSEGV (Segmentation fault)\n");
    }

    void aCrashIsReportedAndTakesItsUsualCourse()
    {
        QFETCH(const QString, way);
        QFETCH(const int, signal);
        QFETCH(const QByteArray, line);
        const CrasherRun run(way);
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        QVERIFY(run.folder().endsWith("/Tolvaran/Kestrano/logs"));
        QVERIFY2(run.report().contains(line), run.report().constData());
        QVERIFY(run.report().contains("Signal: " + QByteArray::number(signal)));
        QVERIFY(run.report().endsWith("End of report\n"));
        // As a shell sees it: ended by that very signal.
        QCOMPARE(run.exitStatus(), QProcess::CrashExit);
        QCOMPARE(run.exitCode(), signal);
    }

    void theReportSaysWhatCrashedWhereAndWhen()
    {
        const CrasherRun run("segv");
        QVERIFY(run.report().startsWith("Crash report of Kestrano 1.0.0\nTime: "));
        QVERIFY(run.report().contains("Time: " + run.reportNames().first().mid(6, 19).toLatin1() + '\n'));
        const QByteArray id = QByteArray::number(run.processId());
        QVERIFY(run.report().contains("Process: " + id + '\n'));
        QVERIFY(run.report().contains("Thread: " + id + '\n'));
        QVERIFY(run.report().contains("Code: 1\n"));
        QVERIFY(section(run.report(), "The same with names:").contains("kestrano_test_crash_here+0x"));
        QVERIFY(section(run.report(), "Loaded objects").contains("/kestrano_test_crasher\n"));
        QVERIFY(section(run.report(), "Loaded objects").contains("/libQt6Core.so"));
    }

    void theStackIsThereWithoutNamesFirst()
    {
        const CrasherRun run("segv");
        const QList<QByteArray> frames = section(run.report(), "Call stack").split('\n').mid(1);
        const QByteArray named = section(run.report(), "The same with names:");
        QVERIFY2(frames.size() >= 4, run.report().constData());
        for (const QByteArray& frame : frames)
            QVERIFY2(named.contains('[' + frame.trimmed() + ']'), run.report().constData());
    }

    void aReportThatHangsDoesNotChangeHowTheProgramEnds()
    {
        makeReportsHang();
        QElapsedTimer taken;
        taken.start();
        const CrasherRun run(QStringList{"abort", "1"});
        QCOMPARE(run.exitStatus(), QProcess::CrashExit);
        QCOMPARE(run.exitCode(), SIGABRT);
        // It did hang, for as long as a report may.
        QVERIFY2(taken.elapsed() >= 900, qPrintable(QString::number(taken.elapsed())));
    }

    void aReportMayTakeTwentySeconds() { QCOMPARE(platform::kCrashReportLimit, std::chrono::seconds(20)); }

    void aReportThatCrashesDoesNotChangeHowTheProgramEnds()
    {
        makeReportsHang();
        QProcess process;
        // The crash has to end it, for the time that a report may take does not.
        process.start(QCoreApplication::applicationDirPath() + "/kestrano_test_crasher", {"abort", "3600"});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(waitsInReport(process.processId(), SIGABRT), 10'000);
        QCOMPARE(kill(static_cast<pid_t>(process.processId()), SIGSEGV), 0);
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(process.exitCode(), SIGABRT);
    }

    void allThreadsAreListedByName()
    {
        const CrasherRun run("thread");
        QVERIFY(run.isNamedAfterTheCrash());
        const QByteArray threads = section(run.report(), "Threads:");
        QCOMPARE(threads.count('\n'), 2);
        QVERIFY2(threads.contains(" kestrano_test_c"), threads.constData());
        QVERIFY2(threads.contains(" crashing-one"), threads.constData());
        QVERIFY(!run.report().contains("Thread: " + QByteArray::number(run.processId()) + '\n'));
    }

    void aReportOfTheSameSecondIsReplaced()
    {
        const QString folder = m_profile->path() + "/home/.qttest/share/Tolvaran/Kestrano/logs";
        QVERIFY(QDir().mkpath(folder));
        const QDateTime now = QDateTime::currentDateTime();
        for (int second = 0; second < 10; ++second) {
            QFile file(folder + now.addSecs(second).toString("'/crash_'yyyy-MM-dd_HH-mm-ss'.dmp'"));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(1'000'000, 'x'));
        }
        const CrasherRun run("abort");
        QCOMPARE(run.folder(), folder);
        QCOMPARE(run.reports().size(), 10);
        const auto isWhole = [](const QByteArray& report) {
            return report.startsWith("Crash report of ") && report.endsWith("End of report\n") &&
                   !report.contains("xxx");
        };
        QCOMPARE(std::count_if(run.reports().begin(), run.reports().end(), isWhole), 1);
        QCOMPARE(run.reports().count(QByteArray(1'000'000, 'x')), 9);
    }

    void noFileMeansSilentlyNoReport()
    {
        // A file stands where the folder should be.
        QVERIFY(QDir().mkpath(m_profile->path() + "/home/.qttest/share/Tolvaran/Kestrano"));
        QFile blocker(m_profile->path() + "/home/.qttest/share/Tolvaran/Kestrano/logs");
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const CrasherRun run("segv");
        QVERIFY(run.reportNames().isEmpty());
        QCOMPARE(run.exitStatus(), QProcess::CrashExit);
        QCOMPARE(run.exitCode(), SIGSEGV);
    }

    void folderMayBeOfAnyLengthAndInAnyScript()
    {
        const QTemporaryDir root;
        const QString folder = root.path() + QStringLiteral("/Jürgen Möller/録画 и снимки") +
                               QStringLiteral("/Aufnahmen aus dem Übungsraum").repeated(10);
        QVERIFY(folder.size() > 300);
        QVERIFY(QDir().mkpath(folder));
        const CrasherRun run = CrasherRun::into(folder, "segv");
        QVERIFY2(run.isNamedAfterTheCrash(), qPrintable(run.reportNames().join(' ')));
        QVERIFY(!run.report().isEmpty());
    }

    void withoutACrashThereIsNoReport()
    {
        const CrasherRun run("none");
        QVERIFY(QDir(run.folder()).exists());
        QVERIFY(run.reportNames().isEmpty());
        QCOMPARE(run.exitCode(), 0);
    }

    void theNameHasLocalTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::newRow("ahead of UTC") << QByteArray("Asia/Kolkata");
        QTest::newRow("behind UTC") << QByteArray("America/St_Johns");
        QTest::newRow("without rules") << QByteArray("XYZ-3:30");
    }

    void theNameHasLocalTime()
    {
        QFETCH(const QByteArray, zone);
        const QByteArray before = qgetenv("TZ");
        qputenv("TZ", zone);
        tzset();
        const CrasherRun run("abort");
        const bool named = run.isNamedAfterTheCrash();
        before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
        tzset();
        QVERIFY2(named, qPrintable(run.reportNames().join(' ')));
    }
};

static int run(int argc, char* argv[])
{
    TestProfile profile;
    const QCoreApplication application(argc, argv);
    TestCrashReport test(&profile);
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_crashreport_x11.moc"
