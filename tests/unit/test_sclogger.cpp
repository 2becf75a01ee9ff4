// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/sclogger.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr qsizetype kStampLength = 23;

QStringList linesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

/// The lines without their time stamps.
QStringList messagesOf(const QString& path)
{
    QStringList messages;
    for (const QString& line : linesOf(path))
        messages.append(line.mid(kStampLength));
    return messages;
}

} // namespace

/// The logger lives and dies with the application object, so each test has an application of its own.
class TestSCLogger : public QObject
{
    Q_OBJECT

private:
    TestProfile m_profile;
    QTemporaryDir m_folder;
    std::unique_ptr<QCoreApplication> m_application;
    int m_argumentCount = 1;
    char m_name[12] = "test_logger";
    char* m_arguments[2] = {m_name, nullptr};

    QString logPath() const { return m_folder.filePath("sub/folder/the.log"); }

    static void logFromThread(int thread)
    {
        for (int line = 0; line < 200; ++line)
            SCLogger::info(QString("thread %1 line %2").arg(thread).arg(line));
    }

private slots:
    void init()
    {
        appidentity::apply();
        QStandardPaths::setTestModeEnabled(true);
        m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
    }

    void cleanup()
    {
        m_application.reset();
        QDir(m_folder.filePath("sub")).removeRecursively();
    }

    void theLoggerBelongsToTheApplication()
    {
        QCOMPARE(SCLogger::instance()->parent(), QCoreApplication::instance());
        QCOMPARE(SCLogger::instance(), SCLogger::instance());
    }

    void aMessageBeforeInitializeReachesOnlyTheMessageOutput()
    {
        const MessageCapture capture;
        SCLogger::info("early");
        const auto messages = capture.messages();
        QCOMPARE(messages.size(), std::size_t{2});
        QCOMPARE(messages.at(0).type, QtWarningMsg);
        QCOMPARE(messages.at(0).text, QString("Logger not initialized, cannot write: Info: early"));
        QCOMPARE(messages.at(1).type, QtInfoMsg);
        QCOMPARE(messages.at(1).text, QString("[INFO] early"));
    }

    void missingFoldersAreMade()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        QVERIFY(QFile::exists(logPath()));
    }

    void theFirstTwoLinesCarryTheSameStamp()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const QStringList lines = linesOf(logPath());
        QCOMPARE(lines.size(), 2);
        const QString stamp = lines.at(0).left(kStampLength);
        QVERIFY(QDateTime::fromString(stamp, "yyyy-MM-dd HH:mm:ss.zzz").isValid());
        QCOMPARE(lines.at(0), stamp + " - === Application Started ===");
        QCOMPARE(lines.at(1), stamp + " - Log file initialized: " + logPath());
    }

    void initializingTwiceKeepsTheFirstFile()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const QString second = m_folder.filePath("sub/second.log");
        const MessageCapture capture;
        QVERIFY(SCLogger::instance()->initialize(second));
        QVERIFY(SCLogger::instance()->initialize(QString()));
        QVERIFY(!QFile::exists(second));
        QCOMPARE(linesOf(logPath()).size(), 2);
        QVERIFY(capture.texts().isEmpty());
    }

    void anEmptyPathMeansADatedFileInTheLogFolder()
    {
        QDir(appidentity::logFolder()).removeRecursively();
        const QDateTime before = QDateTime::currentDateTime();
        QVERIFY(SCLogger::instance()->initialize());
        const QStringList files = QDir(appidentity::logFolder()).entryList(QDir::Files);
        QCOMPARE(files.size(), 1);
        const QRegularExpression pattern("^vexmoor_(\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d)\\.log$");
        const QRegularExpressionMatch match = pattern.match(files.first());
        QVERIFY2(match.hasMatch(), qPrintable(files.first()));
        const QDateTime stamp = QDateTime::fromString(match.captured(1), "yyyy-MM-dd_HH-mm-ss");
        QVERIFY(qAbs(before.secsTo(stamp)) <= 2);
        QVERIFY(appidentity::logFolder().endsWith("/logs"));
        m_application.reset();
        QVERIFY(QDir(appidentity::logFolder()).removeRecursively());
    }

    void twoStartsInTheSameSecondShareOneFile()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        SCLogger::info("first");
        restartApplication();
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        QCOMPARE(linesOf(logPath()).size(), 5);
        QCOMPARE(messagesOf(logPath()).at(2), QString(" - Info: first"));
    }

    void levels()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const MessageCapture capture;
        SCLogger::debug("one");
        SCLogger::info("two");
        SCLogger::warning("three");
        SCLogger::error("four");
        QCOMPARE(messagesOf(logPath()).mid(2),
                 QStringList({" - Debug: one", " - Info: two", " - Warning: three", " - Error: four"}));
        QCOMPARE(capture.texts(QtDebugMsg), QStringList("[DEBUG] one"));
        QCOMPARE(capture.texts(QtInfoMsg), QStringList("[INFO] two"));
        QCOMPARE(capture.texts(QtWarningMsg), QStringList("[WARNING] three"));
        QCOMPARE(capture.texts(QtCriticalMsg), QStringList("[ERROR] four"));
    }

    void eachLineIsStampedWithTheLocalTime()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const QDateTime before = QDateTime::currentDateTime();
        SCLogger::info("now");
        const QDateTime stamp =
            QDateTime::fromString(linesOf(logPath()).last().left(kStampLength), "yyyy-MM-dd HH:mm:ss.zzz");
        QVERIFY(before.msecsTo(stamp) >= 0);
        QVERIFY(before.msecsTo(stamp) < 2000);
    }

    void placeholdersAreWrittenUnchanged()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const MessageCapture capture;
        const QString message("%1 and %2, %L1, 100%, \"quoted\", %%1");
        SCLogger::warning(message);
        QCOMPARE(messagesOf(logPath()).last(), " - Warning: " + message);
        QCOMPARE(capture.texts(), QStringList("[WARNING] " + message));
    }

    void textIsWrittenAsUtf8()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        SCLogger::info(u8"Übertragung 录制");
        QCOMPARE(messagesOf(logPath()).last(), QString(u8" - Info: Übertragung 录制"));
    }

    void aLineIsInTheFileBeforeTheEchoIsSent()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        static QString path;
        static qsizetype linesAtEcho;
        path = logPath();
        linesAtEcho = 0;
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString&) { linesAtEcho = linesOf(path).size(); });
        SCLogger::info("flushed");
        qInstallMessageHandler(previous);
        QCOMPARE(linesAtEcho, 3);
    }

    void aFileThatCannotBeOpenedIsReported()
    {
        // A file stands where the log's folder should be.
        QVERIFY(QDir().mkpath(m_folder.filePath("sub")));
        QFile blocker(m_folder.filePath("sub/folder"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const MessageCapture capture;
        QVERIFY(!SCLogger::instance()->initialize(logPath()));
        QCOMPARE(capture.texts(QtCriticalMsg), QStringList("Failed to open log file: " + logPath()));
        SCLogger::error("lost");
        QVERIFY(capture.texts().contains("Logger not initialized, cannot write: Error: lost"));
        QVERIFY(capture.texts().contains("[ERROR] lost"));
    }

    void aPathLongerThanAnySystemTakesIsReportedInTheSameWords_data()
    {
        QTest::addColumn<QString>("tail");
        QTest::newRow("name") << QString(300, u'n') + ".log";
        QTest::newRow("whole path") << QString(40000, u'n') + "/vexmoor.log";
    }

    void aPathLongerThanAnySystemTakesIsReportedInTheSameWords()
    {
        QFETCH(const QString, tail);
        const QString path = m_folder.filePath(tail);
        const MessageCapture capture;
        QVERIFY(!SCLogger::instance()->initialize(path));
        QCOMPARE(capture.texts(), QStringList("Failed to open log file: " + path));
    }

    void aFailedInitializeCanBeTriedAgain()
    {
        const MessageCapture capture;
        QVERIFY(!SCLogger::instance()->initialize(m_folder.path()));
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        QCOMPARE(linesOf(logPath()).size(), 2);
    }

    void aFileClosedBehindTheLoggersBackIsOpenedAgain()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        SCLogger::instance()->findChild<QFile*>()->close();
        SCLogger::info("back again");
        QCOMPARE(linesOf(logPath()).size(), 3);
        QCOMPARE(messagesOf(logPath()).last(), QString(" - Info: back again"));
    }

    void aLineIsLostWhenTheFileCannotBeReopened()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        SCLogger::instance()->findChild<QFile*>()->close();
        QVERIFY(QFile::remove(logPath()));
        QVERIFY(QDir().mkpath(logPath()));
        const MessageCapture capture;
        SCLogger::info("lost");
        QCOMPARE(capture.texts(QtCriticalMsg), QStringList("Failed to open log file: " + logPath()));
        QCOMPARE(capture.texts(QtInfoMsg), QStringList("[INFO] lost"));
        QVERIFY(QDir().rmdir(logPath()));
        SCLogger::info("found");
        QCOMPARE(messagesOf(logPath()), QStringList(" - Info: found"));
    }

    void threadsDoNotMixTheirLines()
    {
        QVERIFY(SCLogger::instance()->initialize(logPath()));
        const MessageCapture capture;
        std::vector<std::thread> threads;
        threads.reserve(8);
        for (int thread = 0; thread < 8; ++thread)
            threads.emplace_back(logFromThread, thread);
        for (std::thread& thread : threads)
            thread.join();
        const QStringList messages = messagesOf(logPath()).mid(2);
        QCOMPARE(messages.size(), 8 * 200);
        for (int thread = 0; thread < 8; ++thread) {
            const QStringList ofThread = messages.filter(QString("thread %1 ").arg(thread));
            for (int line = 0; line < 200; ++line)
                QCOMPARE(ofThread.at(line), QString(" - Info: thread %1 line %2").arg(thread).arg(line));
        }
        QCOMPARE(capture.texts(QtInfoMsg).size(), 8 * 200);
    }

private:
    void restartApplication()
    {
        m_application.reset();
        m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
    }
};

static int run(int argc, char* argv[])
{
    TestSCLogger test;
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_sclogger.moc"
