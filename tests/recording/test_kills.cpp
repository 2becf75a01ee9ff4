// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/mp4file.h"
#include "tests/recording/formatjudge.h"
#include "tests/recording/killjudge.h"
#include "tests/recording/owndisplay.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>

#include <csignal>
#include <filesystem>

namespace {

constexpr int kTimeoutMs = 20'000;

bool runsAllKills()
{
    return qEnvironmentVariableIsSet("KESTRANO_ALL_KILLS");
}

int rounds()
{
    return runsAllKills() ? 5 : 1;
}

const formatjudge::Expected& format(int index)
{
    return formatjudge::kFormats.at(static_cast<std::size_t>(index));
}

void waitForAMoment()
{
    constexpr int kLeastMs = 2000;
    QTest::qWait(kLeastMs + QRandomGenerator::global()->bounded(runsAllKills() ? 4000 : 700));
}

QByteArray outputOf(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.start(tool, arguments);
    process.waitForFinished(-1);
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

/// Of each stream.
QByteArray packetCounts(const QString& path)
{
    return outputOf("ffprobe", {"-v", "error", "-count_packets", "-show_entries", "stream=nb_read_packets", "-of",
                                "csv=p=0", path});
}

/// A recording that takes some time to finish, as a killed program leaves it: in fragments, and in the list of files.
class LargeRecording
{
public:
    explicit LargeRecording(const ProgramUnderTest& program);

    QString path() const { return m_path; }
    QString failure() const { return m_failure; }
    /// In the place of what has become of it.
    void putThere() const;

private:
    QString m_list;
    QString m_path;
    QString m_original;
    QString m_failure;
};

LargeRecording::LargeRecording(const ProgramUnderTest& program)
    : m_list(program.dataFolder().filePath("file_data.json"))
    , m_path(program.saveFolder() + "/large.mp4")
    , m_original(program.profile().filePath("original.mp4"))
{
    QDir().mkpath(program.saveFolder());
    QDir().mkpath(program.dataFolder().path());
    const QString part = program.profile().filePath("part.mp4");
    outputOf("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "testsrc2=size=640x360:rate=30,noise=alls=90:allf=t", "-f",
                        "lavfi", "-i", "sine", "-t", "4", "-c:v", "mpeg4", "-q:v", "2", "-c:a", "aac", part});
    outputOf("ffmpeg", {"-v", "error", "-stream_loop", "4", "-i", part, "-c", "copy", "-movflags",
                        "+frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "1000000", m_original});
    if (!isFragmentedMp4(m_original))
        m_failure = QStringLiteral("FFmpeg made no file in fragments");
}

void LargeRecording::putThere() const
{
    std::filesystem::remove(m_path.toStdString());
    QFile::remove(unfinishedMp4Path(m_path));
    std::filesystem::create_hard_link(m_original.toStdString(), m_path.toStdString());
    const QJsonObject properties{{"type", "video"}, {"dateAdded", "2026-01-01T12:00:00"}, {"unfinished", true}};
    QFile list(m_list);
    if (list.open(QIODevice::WriteOnly))
        list.write(QJsonDocument(QJsonArray{QJsonObject{{"filepath", m_path}, {"properties", properties}}}).toJson());
}

} // namespace

/// What is left of a recording whose program does not end as it should.
class TestKills : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(m_performance.begin(), QString());
    }

    void killedRecordingPlaysUpToTheLastSeconds_data();
    void killedRecordingPlaysUpToTheLastSeconds();
    void recordingIsFinishedWhenTheXServerIsGone_data();
    void recordingIsFinishedWhenTheXServerIsGone();
    void idleProgramEndsWhenTheXServerIsGone_data();
    void idleProgramEndsWhenTheXServerIsGone();
    void killedWhileFinishingLosesNothing();

private:
    void judgeNextStart(ProgramUnderTest& program, const formatjudge::Expected& expected, const QString& path,
                        int64_t killedNs) const;

    Performance m_performance;
    QSize m_screen;
};

void TestKills::killedRecordingPlaysUpToTheLastSeconds_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("signal");
    for (int index = 0; index < static_cast<int>(formatjudge::kFormats.size()); ++index)
        for (int round = 0; round < rounds(); ++round)
            for (const int signal : {SIGKILL, SIGSEGV})
                if (runsAllKills() || (index % 2 == 0) == (signal == SIGKILL))
                    QTest::addRow("%s by signal %d, %d", format(index).name, signal, round) << index << signal;
}

void TestKills::killedRecordingPlaysUpToTheLastSeconds()
{
    QFETCH(const int, index);
    QFETCH(const int, signal);
    const formatjudge::Expected& expected = format(index);
    ProgramUnderTest program;
    program.setSetting(QStringLiteral("recording/format"), QLatin1String(expected.name));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = beginTake(program, QLatin1String(expected.extension));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    waitForAMoment();
    const int64_t killedNs = monotonicNow();
    QCOMPARE(::kill(static_cast<pid_t>(program.processId()), signal), 0);
    QVERIFY(program.waitUntilEnded(kTimeoutMs));
    killjudge::check(expected, take.path, m_screen, killedNs);
    if (!QTest::currentTestFailed() && QLatin1String(expected.extension) == QLatin1String("mp4"))
        judgeNextStart(program, expected, take.path, killedNs);
}

/// The next start makes the file a plain one.
void TestKills::judgeNextStart(ProgramUnderTest& program, const formatjudge::Expected& expected, const QString& path,
                               int64_t killedNs) const
{
    QVERIFY(isFragmentedMp4(path));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    QTRY_VERIFY_WITH_TIMEOUT(!isFragmentedMp4(path), kTimeoutMs);
    QVERIFY(!QFileInfo::exists(unfinishedMp4Path(path)));
    const MediaFile file(path);
    QVERIFY2(file.isReadable(), qPrintable(file.error()));
    killjudge::check(expected, path, m_screen, killedNs);
}

void TestKills::recordingIsFinishedWhenTheXServerIsGone_data()
{
    QTest::addColumn<int>("index");
    const int step = runsAllKills() ? 1 : 6;
    for (int index = 0; index < static_cast<int>(formatjudge::kFormats.size()); index += step)
        for (int round = 0; round < rounds(); ++round)
            QTest::addRow("%s %d", format(index).name, round) << index;
}

void TestKills::recordingIsFinishedWhenTheXServerIsGone()
{
    QFETCH(const int, index);
    const formatjudge::Expected& expected = format(index);
    OwnDisplay display(m_screen);
    QVERIFY(display.isThere());
    Performance performance;
    QCOMPARE(performance.show(), QString());
    ProgramUnderTest program;
    program.setSetting(QStringLiteral("recording/format"), QLatin1String(expected.name));
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    const Take take = beginTake(program, QLatin1String(expected.extension));
    QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
    waitForAMoment();
    const int64_t killedNs = monotonicNow();
    display.kill();
    QVERIFY(program.waitUntilEnded(kTimeoutMs));
    QCOMPARE(program.exitCode(), EXIT_FAILURE);
    QCOMPARE(program.crashReport(), QString());
    for (const char* const line : {"The X server is gone", "Recording stopped... 0", "Application exiting..."})
        QVERIFY2(program.logText().contains(QLatin1String(line)), qPrintable(program.logText()));
    QVERIFY(!isFragmentedMp4(take.path));
    killjudge::check(expected, take.path, m_screen, killedNs);
}

void TestKills::idleProgramEndsWhenTheXServerIsGone_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::newRow("as it is") << QStringList();
    QTest::newRow("without warnings") << QStringList{"env", "QT_LOGGING_RULES=*.warning=false"};
}

void TestKills::idleProgramEndsWhenTheXServerIsGone()
{
    QFETCH(const QStringList, command);
    OwnDisplay display(m_screen);
    QVERIFY(display.isThere());
    ProgramUnderTest program;
    program.startThrough(command);
    QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
    display.kill();
    QVERIFY(program.waitUntilEnded(kTimeoutMs));
    QCOMPARE(program.exitCode(), EXIT_FAILURE);
    QCOMPARE(program.crashReport(), QString());
    QVERIFY2(program.logText().contains("The X server is gone"), qPrintable(program.logText()));
}

/// At the first and at random moments of the time that it takes to make a large file plain.
void TestKills::killedWhileFinishingLosesNothing()
{
    ProgramUnderTest program;
    const LargeRecording recording(program);
    QCOMPARE(recording.failure(), QString());
    recording.putThere();
    const QByteArray packets = packetCounts(recording.path());
    QVERIFY(!packets.isEmpty());
    const QString unfinished = unfinishedMp4Path(recording.path());
    int msToFinish = 0;
    int killsWithinTheWork = 0;
    for (int round = 0; round <= 2 * rounds(); ++round) {
        recording.putThere();
        QVERIFY(program.start());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(unfinished) || !isFragmentedMp4(recording.path()), kTimeoutMs);
        QElapsedTimer finishing;
        finishing.start();
        if (round == 0) {
            QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(unfinished), kTimeoutMs);
            msToFinish = static_cast<int>(finishing.elapsed());
            QVERIFY(!isFragmentedMp4(recording.path()));
        } else if (round > 1) {
            QTest::qSleep(QRandomGenerator::global()->bounded(msToFinish + 1));
        }
        program.kill();
        killsWithinTheWork += QFileInfo::exists(unfinished) ? 1 : 0;
        qInfo("killed after %lld of %d ms: %s", static_cast<long long>(finishing.elapsed()), msToFinish,
              isFragmentedMp4(recording.path()) ? "as it was" : "finished");
        QCOMPARE(packetCounts(recording.path()), packets);
    }
    QVERIFY(killsWithinTheWork > 0);
    QVERIFY(program.start());
    QTRY_VERIFY_WITH_TIMEOUT(!isFragmentedMp4(recording.path()), kTimeoutMs);
    QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(unfinished), kTimeoutMs);
    QCOMPARE(packetCounts(recording.path()), packets);
}

static int run(int argc, char* argv[])
{
    // Qt Test ends a function after five minutes.
    if (runsAllKills())
        qputenv("QTEST_FUNCTION_TIMEOUT", "3600000");
    return testrun::gui<TestKills>(argc, argv);
}

REGISTER_TEST(run);

#include "test_kills.moc"
