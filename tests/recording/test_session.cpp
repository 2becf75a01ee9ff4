// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <csignal>

namespace {

const auto kHotkey = QStringLiteral("F9");
const auto kMp4 = QStringLiteral("mp4");
const auto kStarted = QStringLiteral("Recording started...");
const auto kStopped = QStringLiteral("Recording stopped...");
constexpr int kShortMs = 800;
constexpr int kWindowTimeoutMs = 15'000;
constexpr int kMessageTimeoutMs = 60'000;

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

bool isPlayable(const QString& path)
{
    const MediaFile file(path);
    return file.isReadable() && file.video() && !file.video()->frameSeconds.isEmpty();
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype countMessages(ProgramUnderTest& program, const QString& text)
{
    const auto& messages = program.messages();
    return std::count_if(messages.begin(), messages.end(),
                         [&](const ProgramUnderTest::Line& line) { return line.text.contains(text); });
}

} // namespace

/// How recordings begin and end, on the running program.
class TestSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(m_performance.begin(), QString()); }

    void theHotkeyCancelsTheCountdownOfThreeSeconds();
    void aTakenNameGetsANumber();
    void aRecordingIsInTheListOfFilesFromItsStartOn();
    void theListSaysHowLongAndLargeARecordingIs();
    void aFailedRecordingLeavesTheNextOneWhole();
    void aFailedPreparationEndsInIdleWithAReason();
    void endedBySignalWhileRecordingTheProgramFinishesTheFile_data();
    void endedBySignalWhileRecordingTheProgramFinishesTheFile();
    void closingTheWindowDuringTheCountdownRecordsNothing();
    void aRecordingStoppedAtOnceIsPlayable();
    void theHotkeyHammeredLeavesPlayableFiles();

private:
    /// Asks for a recording that comes to nothing, twice; it ends soon after its last message.
    static void expectNothingRecorded(ProgramUnderTest& program, const QString& lastMessage, const QString& reason);

    Performance m_performance;
};

void TestSession::theHotkeyCancelsTheCountdownOfThreeSeconds()
{
    constexpr int64_t kCountdownNs = 3'000'000'000;
    // Timers of that length may be a twentieth early.
    constexpr int64_t kShortestNs = kCountdownNs / 20 * 19;
    ProgramUnderTest program;
    program.countDownInFull();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(kHotkey);
    QVERIFY(program.mainWindow(true, kWindowTimeoutMs).has_value());
    ProgramUnderTest::pressKey(kHotkey);
    QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    // The cancelled one neither records nor keeps the next one from it, which counts from three again.
    const int64_t askedNs = monotonicNow();
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY2(take.startedNs - askedNs >= kShortestNs, qPrintable(program.transcript()));
    QCOMPARE(countMessages(program, kStarted), 1);
    QCOMPARE(filesIn(program.saveFolder()), QStringList{QFileInfo(take.path).fileName()});
    QVERIFY(isPlayable(take.path));
}

void TestSession::aTakenNameGetsANumber()
{
    ProgramUnderTest program;
    const QString first = program.saveFolder() + QLatin1String("/demo.mp4");
    const QByteArray precious("an earlier recording");
    QVERIFY(QDir().mkpath(program.saveFolder()));
    QFile earlier(first);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write(precious) == precious.size());
    earlier.close();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(goBackFromRecordButton(program, kStepsToName));
    ProgramUnderTest::typeText(QStringLiteral("  demo.mp4 "));
    for (const char* name : {"demo (2).mp4", "demo (3).mp4"}) {
        const Take take = record(program, kMp4, kShortMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(QFileInfo(take.path).fileName(), QLatin1String(name));
        QVERIFY(isPlayable(take.path));
    }
    QCOMPARE(contentOf(first), precious);
    const QStringList expected{QStringLiteral("demo (2).mp4"), QStringLiteral("demo (3).mp4"),
                               QStringLiteral("demo.mp4")};
    QCOMPARE(filesIn(program.saveFolder()), expected);
}

void TestSession::aRecordingIsInTheListOfFilesFromItsStartOn()
{
    ProgramUnderTest program;
    const auto listed = [&program] {
        const QByteArray list = contentOf(program.profile().filePath("data/Tolvaran/Kestrano/file_data.json"));
        return QJsonDocument::fromJson(list).array().first().toObject();
    };
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QVERIFY(listed().isEmpty());
    Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTRY_COMPARE(listed().value("filepath").toString(), take.path);
    QCOMPARE(listed().value("properties").toObject().value("type").toString(), QStringLiteral("video"));
    // What a crash leaves behind is in the list as well.
    program.kill();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QCOMPARE(listed().value("filepath").toString(), take.path);
}

void TestSession::theListSaysHowLongAndLargeARecordingIs()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    const auto properties = [&program] {
        const QByteArray list = contentOf(program.dataFolder().filePath("file_data.json"));
        return QJsonDocument::fromJson(list).array().first().toObject().value("properties").toObject();
    };
    QTRY_VERIFY2_WITH_TIMEOUT(properties().contains("durationMs"), qPrintable(program.transcript()), kMessageTimeoutMs);
    QCOMPARE(properties().value("sizeBytes").toInteger(), QFileInfo(take.path).size());
    const double lengthMs = MediaFile(take.path).durationSeconds() * 1000;
    QVERIFY2(std::abs(properties().value("durationMs").toDouble() - lengthMs) < 100,
             qPrintable(QString::number(lengthMs)));
    QVERIFY(!properties().contains("unfinished"));
}

void TestSession::expectNothingRecorded(ProgramUnderTest& program, const QString& lastMessage, const QString& reason)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        const qsizetype from = program.messages().size();
        const qsizetype logFrom = program.logText().size();
        ProgramUnderTest::pressKey(kHotkey);
        QVERIFY2(program.waitForMessage(lastMessage, kMessageTimeoutMs, from).has_value(),
                 qPrintable(program.transcript()));
        // The reason, not what went wrong before. The next attempt would stop a recording that has not failed yet.
        QTRY_VERIFY2_WITH_TIMEOUT(program.logText().mid(logFrom).contains(QLatin1String("Error: ") + reason),
                                  qPrintable(program.logText()), kMessageTimeoutMs);
        QVERIFY2(program.mainWindow(false, kWindowTimeoutMs).has_value(), qPrintable(program.transcript()));
    }
}

void TestSession::aFailedRecordingLeavesTheNextOneWhole()
{
    ProgramUnderTest program;
    // The default folder cannot be made either.
    QFile inTheWay(program.saveFolder());
    QVERIFY(program.profile().mkpath(QStringLiteral("home")));
    QFile inTheWayOfTheDefault(program.profile().filePath(QStringLiteral("home/Videos")));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly) && inTheWayOfTheDefault.open(QIODevice::WriteOnly));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    expectNothingRecorded(program, kStarted, QStringLiteral("The recording ended by itself"));
    QCOMPARE(
        countMessages(program, QStringLiteral("Notice: The file could not be opened: the recording did not start.")),
        2);
    QVERIFY(inTheWay.remove());
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(isPlayable(take.path));
}

void TestSession::aFailedPreparationEndsInIdleWithAReason()
{
    // The same program beside engine data that lack what captures the screen.
    const QTemporaryDir folder;
    const QDir original(QCoreApplication::applicationDirPath());
    const QString plugins = QStringLiteral("obs-data/obs-plugins/64bit");
    const QDir copy(folder.path());
    QVERIFY(QFile::copy(original.filePath(QStringLiteral("kestrano")), copy.filePath(QStringLiteral("kestrano"))));
    QVERIFY(copy.mkpath(plugins));
    QVERIFY(QFile::link(original.filePath(QStringLiteral("obs-data/data")),
                        copy.filePath(QStringLiteral("obs-data/data"))));
    for (const QFileInfo& plugin : QDir(original.filePath(plugins)).entryInfoList({QStringLiteral("*.so")}))
        if (!plugin.fileName().contains(QLatin1String("linux-capture")))
            QVERIFY(
                QFile::link(plugin.absoluteFilePath(), copy.filePath(plugins + QLatin1Char('/') + plugin.fileName())));
    ProgramUnderTest program(copy.filePath(QStringLiteral("kestrano")));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    expectNothingRecorded(program, QStringLiteral("Failed to prepare recording"), QString());
    QCOMPARE(countMessages(program, kStarted), 0);
    QVERIFY(!QFileInfo::exists(program.saveFolder()));
}

void TestSession::endedBySignalWhileRecordingTheProgramFinishesTheFile_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("SIGQUIT") << SIGQUIT;
}

void TestSession::endedBySignalWhileRecordingTheProgramFinishesTheFile()
{
    QFETCH(const int, signal);
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QTest::qWait(kShortMs);
    QCOMPARE(kill(static_cast<pid_t>(program.processId()), signal), 0);
    QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
    QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    QVERIFY2(program.logText().contains(kStopped + QLatin1String(" 0")), qPrintable(program.logText()));
    QVERIFY(isPlayable(take.path));
}

void TestSession::closingTheWindowDuringTheCountdownRecordsNothing()
{
    ProgramUnderTest program;
    program.countDownInFull();
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    ProgramUnderTest::pressKey(kHotkey);
    const auto window = program.mainWindow(true, kWindowTimeoutMs);
    QVERIFY(window.has_value());
    x11clients::close(window->id);
    QVERIFY2(program.waitUntilEnded(kMessageTimeoutMs), qPrintable(program.transcript()));
    QVERIFY2(program.endedWell(), qPrintable(program.transcript()));
    QCOMPARE(countMessages(program, kStarted), 0);
    QVERIFY(!QFileInfo::exists(program.saveFolder()));
}

void TestSession::aRecordingStoppedAtOnceIsPlayable()
{
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    Take take = beginTake(program, kMp4);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    endTake(program, take);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    QVERIFY(isPlayable(take.path));
}

void TestSession::theHotkeyHammeredLeavesPlayableFiles()
{
    constexpr int kPresses = 20;
    constexpr int kLongestPauseMs = 700;
    ProgramUnderTest program;
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    for (int press = 0; press < kPresses; ++press) {
        ProgramUnderTest::pressKey(kHotkey);
        QTest::qWait(random.bounded(kLongestPauseMs));
        QVERIFY2(program.isRunning(), qPrintable(program.transcript()));
    }
    // What was begun last may still be counted down, and then runs until it is stopped.
    QTest::qWait(2 * kLongestPauseMs);
    const auto isIdle = [&program] {
        return countMessages(program, kStopped) == countMessages(program, kStarted) &&
               program.mainWindow(false, 0).has_value();
    };
    // A press may meet a recording that is just ending, and begin the next one.
    for (int press = 0; press < kPresses && !isIdle(); ++press) {
        if (countMessages(program, kStarted) > countMessages(program, kStopped))
            ProgramUnderTest::pressKey(kHotkey);
        (void)QTest::qWaitFor(isIdle, kLongestPauseMs * (press + 1));
    }
    QVERIFY2(isIdle(), qPrintable(program.transcript()));
    const QStringList files = filesIn(program.saveFolder());
    QCOMPARE(files.size(), countMessages(program, kStarted));
    for (const QString& name : files)
        QVERIFY2(isPlayable(program.saveFolder() + QLatin1Char('/') + name), qPrintable(name));
    const Take take = record(program, kMp4, kShortMs);
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
}

REGISTER_TEST(testrun::core<TestSession>);
#include "test_session.moc"
