#include "platform/system_failure.h"
#include "tests/support/messagecapture.h"

#include <QTest>

namespace {

/// "No such file" is this number on every system.
constexpr unsigned long kNoSuchFile = 2;

QStringList g_reports;

void keep(const QString& sentence)
{
    g_reports.append(sentence);
}

} // namespace

/// How a failed call to the system gets into the log.
class TestSystemFailure : public QObject
{
    Q_OBJECT

private slots:
    void init() { g_reports.clear(); }

    void cleanup() { platform::setFailureSink(nullptr); }

    void failureIsToldInTheSystemsOwnWords()
    {
        platform::setFailureSink(&keep);
        platform::reportSystemFailure("OpenThatFile", kNoSuchFile);
        const QString words = qt_error_string(kNoSuchFile).trimmed();
        QVERIFY(words.size() > 5);
        QCOMPARE(g_reports, QStringList{"OpenThatFile failed: " + words + " (error 2)"});
    }

    void sentenceIsHandedOnAsItStands()
    {
        platform::setFailureSink(&keep);
        platform::reportFailure(QStringLiteral("100% of %1 failed"));
        QCOMPARE(g_reports, QStringList{"100% of %1 failed"});
    }

    void withoutALogItIsAWarningOfTheToolkit()
    {
        const MessageCapture messages;
        platform::reportFailure(QStringLiteral("no log yet"));
        QCOMPARE(messages.texts(QtWarningMsg), QStringList{"no log yet"});
        QCOMPARE(g_reports, QStringList());
    }
};

QTEST_APPLESS_MAIN(TestSystemFailure)

#include "test_systemfailure.moc"
