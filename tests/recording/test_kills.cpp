// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/mp4file.h"
#include "tests/recording/formatjudge.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"
#include "tests/support/testrun.h"
#include "tests/support/testtone.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <optional>

namespace {

constexpr double kNsPerSecond = 1e9;
/// What a recording that is killed may lose.
constexpr double kMaxLossSeconds = 2.0;

/// When the last frame of the test pattern was shown.
std::optional<int64_t> lastShown(const MediaFile& file, const QSize& screen, int64_t nearNs)
{
    const auto numbers = file.numbers(TestPattern(screen));
    const auto last =
        std::find_if(numbers.rbegin(), numbers.rend(), [](const auto& number) { return number.has_value(); });
    return last != numbers.rend() ? std::optional(momentOfNumber(**last, kFramesPerSecond, nearNs)) : std::nullopt;
}

/// When the last of the test tone was heard.
std::optional<int64_t> lastHeard(const MediaFile& file, int64_t nearNs)
{
    constexpr int kSpanMs = 60;
    constexpr qsizetype kSpan = qsizetype{testtone::kSamplesPerSecond} * kSpanMs / 1000;
    const QList<float> samples = file.samples(testtone::kSamplesPerSecond);
    if (samples.size() < kSpan)
        return std::nullopt;
    return testtone::momentOfSample(samples, samples.size() - kSpan, kSpanMs, nearNs);
}

double secondsFrom(std::optional<int64_t> moment, int64_t untilNs)
{
    return moment ? static_cast<double>(untilNs - *moment) / kNsPerSecond : 1e9;
}

} // namespace

/// What is left of a recording whose program is killed.
class TestKills : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(m_performance.begin(), QString());
    }

    void killedRecordingPlaysUpToTheLastSeconds_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("signal");
        const int rounds = qEnvironmentVariableIsSet("KESTRANO_ALL_KILLS") ? 5 : 1;
        for (std::size_t index = 0; index < formatjudge::kFormats.size(); ++index)
            for (int round = 0; round < rounds; ++round) {
                const int signal = (index + static_cast<std::size_t>(round)) % 2 == 0 ? SIGKILL : SIGSEGV;
                QTest::addRow("%s %d", formatjudge::kFormats.at(index).name, round)
                    << static_cast<int>(index) << signal;
            }
    }

    void killedRecordingPlaysUpToTheLastSeconds()
    {
        QFETCH(const int, index);
        QFETCH(const int, signal);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<std::size_t>(index));
        ProgramUnderTest program;
        program.setSetting(QStringLiteral("recording/format"), QLatin1String(expected.name));
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = beginTake(program, QLatin1String(expected.extension));
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QTest::qWait(3000 + QRandomGenerator::global()->bounded(3000));
        const int64_t killedNs = monotonicNow();
        QCOMPARE(::kill(static_cast<pid_t>(program.processId()), signal), 0);
        QVERIFY(program.waitUntilEnded(20'000));
        judge(expected, take.path, killedNs);
        if (!QTest::currentTestFailed() && QLatin1String(expected.extension) == QLatin1String("mp4"))
            judgeNextStart(program, expected, take.path, killedNs);
    }

private:
    void judge(const formatjudge::Expected& expected, const QString& path, int64_t killedNs) const
    {
        const MediaFile file(path);
        const auto nearNs = killedNs - static_cast<int64_t>(kNsPerSecond);
        const double unseen = *expected.videoCodec ? secondsFrom(lastShown(file, m_screen, nearNs), killedNs) : 0;
        const double unheard = *expected.audioCodec ? secondsFrom(lastHeard(file, nearNs), killedNs) : 0;
        qInfo("%s: %lld bytes, %.2f s of video and %.2f s of audio are lost", expected.name,
              static_cast<long long>(QFileInfo(path).size()), unseen, unheard);
        QVERIFY2(unseen < kMaxLossSeconds, qPrintable(file.error()));
        QVERIFY2(unheard < kMaxLossSeconds, qPrintable(file.error()));
    }

    /// The next start makes the file a plain one.
    void judgeNextStart(ProgramUnderTest& program, const formatjudge::Expected& expected, const QString& path,
                        int64_t killedNs) const
    {
        QVERIFY(isFragmentedMp4(path));
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        QTRY_VERIFY_WITH_TIMEOUT(!isFragmentedMp4(path), 20'000);
        QVERIFY(!QFileInfo::exists(unfinishedMp4Path(path)));
        const MediaFile file(path);
        QVERIFY2(file.isReadable(), qPrintable(file.error()));
        judge(expected, path, killedNs);
    }

    Performance m_performance;
    QSize m_screen;
};

REGISTER_TEST(testrun::gui<TestKills>);

#include "test_kills.moc"
