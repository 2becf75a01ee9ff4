// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/formatcycle.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/processusage.h"
#include "tests/support/testrun.h"

#include <QTest>

/// What recordings leave behind in the running program. tools/bench-many makes hundreds of them.
class TestManyRecordings : public QObject
{
    Q_OBJECT

private slots:
    void recordingsKeepNoDescriptorThreadOrSharedMemory()
    {
        constexpr int kSettled = 3;
        constexpr int kRecordings = 10;
        // Threads of pools end after 30 s.
        constexpr int kTimeoutMs = 60'000;
        Performance performance;
        QCOMPARE(performance.begin(), QString());
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        FormatCycle recordings(program);
        while (recordings.count() < kSettled)
            QCOMPARE(recordings.record(kMs), QString());
        const ProcessUsage before = usageOf(program.processId());
        while (recordings.count() < kRecordings)
            QCOMPARE(recordings.record(kMs), QString());
        // What a recording used is released some time after its end, and threads come and go.
        const bool isReleased = QTest::qWaitFor(
            [&program, &before] {
                const ProcessUsage now = usageOf(program.processId());
                return now.descriptors <= before.descriptors && now.threads <= before.threads &&
                       now.sharedParts <= before.sharedParts;
            },
            kTimeoutMs);
        QVERIFY2(isReleased, qPrintable(differences(program, before)));
    }

private:
    static constexpr int kMs = 700;

    static QString differences(const ProgramUnderTest& program, const ProcessUsage& before)
    {
        const ProcessUsage now = usageOf(program.processId());
        return QStringLiteral("descriptors %1, then %2; threads %3, then %4; shared memory %5, then %6")
            .arg(before.descriptors)
            .arg(now.descriptors)
            .arg(before.threads)
            .arg(now.threads)
            .arg(before.sharedParts)
            .arg(now.sharedParts);
    }
};

REGISTER_TEST(testrun::gui<TestManyRecordings>);

#include "test_manyrecordings.moc"
