// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/durations.h"
#include "tests/support/testrun.h"

#include <QTest>

class TestDurations : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { qunsetenv(kVariable); }

    void countdownStepIsASecondUnlessTheEnvironmentHasANumber_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<int>("stepMs");
        QTest::newRow("shortest") << QByteArray("1") << 1;
        QTest::newRow("longest") << QByteArray("60000") << 60000;
        QTest::newRow("too long") << QByteArray("60001") << 1000;
        QTest::newRow("nothing") << QByteArray("0") << 1000;
        QTest::newRow("negative") << QByteArray("-1") << 1000;
        QTest::newRow("a word") << QByteArray("abc") << 1000;
        QTest::newRow("number and unit") << QByteArray("100ms") << 1000;
        QTest::newRow("beyond an int") << QByteArray("99999999999") << 1000;
    }

    void countdownStepIsASecondUnlessTheEnvironmentHasANumber()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const int, stepMs);
        QVERIFY(qputenv(kVariable, value));
        QCOMPARE(durationsFromEnvironment().countdownStepMs, stepMs);
    }

    void withoutTheVariableAllIsAsItIs()
    {
        QCOMPARE(durationsFromEnvironment().countdownStepMs, Durations().countdownStepMs);
    }

private:
    static constexpr const char* kVariable = "KESTRANO_COUNTDOWN_STEP_MS";
};

REGISTER_TEST(testrun::core<TestDurations>);
#include "test_durations.moc"
