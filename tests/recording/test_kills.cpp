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

#include <QFileInfo>
#include <QGuiApplication>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>

#include <csignal>

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

REGISTER_TEST(testrun::gui<TestKills>);

#include "test_kills.moc"
