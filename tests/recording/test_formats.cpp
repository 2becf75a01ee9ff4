// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/avsync.h"
#include "tests/recording/formatjudge.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/programundertest.h"
#include "tests/support/testrun.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

#include <utility>

#include <cmath>

/// Each format recorded by the program through its hotkey, and judged by the file alone.
class TestFormats : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_screen = QGuiApplication::primaryScreen()->size();
        QCOMPARE(m_performance.begin(), QString());
    }

    void aRecordingHoldsTheScreenAndItsSound_data()
    {
        QTest::addColumn<int>("index");
        for (size_t index = 0; index < formatjudge::kFormats.size(); ++index)
            QTest::newRow(formatjudge::kFormats.at(index).name) << static_cast<int>(index);
    }

    void aRecordingHoldsTheScreenAndItsSound()
    {
        constexpr int kRecordMs = 2500;
        QFETCH(int, index);
        const formatjudge::Expected& expected = formatjudge::kFormats.at(static_cast<size_t>(index));
        ProgramUnderTest program;
        // The sound server takes longer over its first client, which a countdown covers.
        if (!std::exchange(m_hasRecorded, true))
            program.countDownInFull();
        program.setSetting(QStringLiteral("recording/format"), QLatin1String(expected.name));
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const Take take = record(program, QLatin1String(expected.extension), kRecordMs);
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        const MediaFile file(take.path);
        formatjudge::check(expected, file, take, m_screen);
        if (!QTest::currentTestFailed() && *expected.videoCodec && *expected.audioCodec)
            checkThatAudioAndVideoGoTogether(AvSync(file, take.startedNs));
    }

private:
    static void checkThatAudioAndVideoGoTogether(const AvSync& sync)
    {
        constexpr double kApart = 0.04;
        constexpr double kEndsApart = 0.1;
        /// From the first second on.
        constexpr double kJudgedAt = 0.7;
        const auto delay = sync.audioDelayAt(kJudgedAt);
        QVERIFY(delay);
        qInfo("audio %+.3f s after the video, and its end %+.3f s", *delay, sync.audioEndsLaterBy());
        QVERIFY2(*delay > -kApart && *delay < kApart + formatjudge::Allowance().soundServer,
                 qPrintable(QString::number(*delay)));
        QVERIFY2(std::abs(sync.audioEndsLaterBy()) < kEndsApart, qPrintable(QString::number(sync.audioEndsLaterBy())));
    }

    Performance m_performance;
    QSize m_screen;
    bool m_hasRecorded = false;
};

REGISTER_TEST(testrun::gui<TestFormats>);
#include "test_formats.moc"
