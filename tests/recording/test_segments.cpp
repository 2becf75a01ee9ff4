// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"
#include "tests/support/programundertest.h"
#include "tests/support/systemvsegments.h"
#include "tests/support/testrun.h"

#include <QTest>

/// Which memory the running program shares, and what a program that is killed leaves behind.
class TestSegments : public QObject
{
    Q_OBJECT

private slots:
    void recordingSharesNoSegmentAndLeavesNoneWhenItIsKilled()
    {
        ProgramUnderTest program;
        QVERIFY2(program.startAndWaitUntilReady(), qPrintable(program.transcript()));
        const qint64 id = program.processId();
        QCOMPARE(systemvsegments::leftBehindBy(id), QList<int>());
        const Take take = beginTake(program, QStringLiteral("mp4"));
        QVERIFY2(take.failure.isEmpty(), qPrintable(take.failure));
        QCOMPARE(systemvsegments::leftBehindBy(id), QList<int>());
        program.kill();
        QCOMPARE(systemvsegments::leftBehindBy(id), QList<int>());
    }
};

REGISTER_TEST(testrun::core<TestSegments>);

#include "test_segments.moc"
