// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system_failure.h"
#include "tests/support/messagecapture.h"
#include "tests/support/reportedfailures.h"
#include "tests/support/testrun.h"

#include <QTest>

namespace {

/// "No such file" is this number on every system.
constexpr unsigned long kNoSuchFile = 2;

} // namespace

/// How a failed call to the system gets into the log.
class TestSystemFailure : public QObject
{
    Q_OBJECT

private slots:
    void failureIsReportedInTheSystemsOwnWords()
    {
        const ReportedFailures reports;
        platform::reportSystemFailure("OpenThatFile", kNoSuchFile);
        const QString words = qt_error_string(kNoSuchFile).trimmed();
        QVERIFY(words.size() > 5);
        QCOMPARE(reports.sentences(), QStringList{"OpenThatFile failed: " + words + " (error 2)"});
    }

    void sentenceIsHandedOnAsItIs()
    {
        const ReportedFailures reports;
        platform::reportFailure(QStringLiteral("100% of %1 failed"));
        QCOMPARE(reports.sentences(), QStringList{"100% of %1 failed"});
    }

    void withoutALogItIsAWarningOfTheToolkit()
    {
        const MessageCapture messages;
        platform::reportFailure(QStringLiteral("no log yet"));
        QCOMPARE(messages.texts(QtWarningMsg), QStringList{"no log yet"});
    }
};

REGISTER_TEST(testrun::core<TestSystemFailure>);

#include "test_systemfailure.moc"
