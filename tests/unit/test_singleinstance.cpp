#include "app/appidentity.h"
#include "app/singleinstance.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSharedMemory>
#include <QTest>

#include <atomic>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

using Role = SingleInstance::Role;

class TestSingleInstance : public QObject
{
    Q_OBJECT

private:
    QString m_key;

private slots:
    void init()
    {
        // On Windows the names of segments are the user's, not the profile's.
        static int count = 0;
        m_key = QString("KestranoTest%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
    }

    void theFirstCopyMakesTheSegmentAndSaysSo()
    {
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        QCOMPARE(
            capture.texts(),
            QStringList({"Logger not initialized, cannot write: \"Info: Created shared memory for single instance\"",
                         "[INFO] Created shared memory for single instance"}));
    }

    void theSegmentIsZeroUntilThePublishedPairIsInIt()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        QSharedMemory segment(m_key);
        QVERIFY(segment.attach());
        QVERIFY(segment.size() >= 16);
        QCOMPARE(QByteArray(static_cast<const char*>(segment.constData()), 16), QByteArray(16, '\0'));

        const MessageCapture capture;
        first.publish(0x1234567890, 4711);
        quint64 handle = 0;
        qint64 processId = 0;
        const auto* const data = static_cast<const char*>(segment.constData());
        std::memcpy(&handle, data, sizeof(handle));
        std::memcpy(&processId, data + 8, sizeof(processId));
        QCOMPARE(handle, quint64{0x1234567890});
        QCOMPARE(processId, qint64{4711});
        QCOMPARE(capture.texts(QtInfoMsg), QStringList("[INFO] Stored window handle and process ID in shared memory"));
    }

    void aSecondCopyDuringTheFirstOnesStartFindsNoWindow()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        SingleInstance second(m_key);
        const MessageCapture capture;
        QCOMPARE(second.claim(), Role::Second);
        QVERIFY(capture.texts().isEmpty());
        second.handOver();
        QCOMPARE(capture.texts(),
                 QStringList({"Logger not initialized, cannot write: \"Error: Stored window handle is invalid\"",
                              "[ERROR] Stored window handle is invalid"}));
    }

    void aHandleThatIsNoWindowCountsAsNone_data()
    {
        QTest::addColumn<quint64>("handle");
        QTest::newRow("stored 0") << quint64{0};
        QTest::newRow("never a window") << quint64{0xfffffff1};
        QTest::newRow("too large") << quint64{0x7fffffffffffffff};
    }

    void aHandleThatIsNoWindowCountsAsNone()
    {
        QFETCH(const quint64, handle);
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        first.publish(handle, QCoreApplication::applicationPid());
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
        const MessageCapture capture;
        second.handOver();
        QCOMPARE(capture.texts(QtCriticalMsg), QStringList("[ERROR] Stored window handle is invalid"));
    }

    void theSecondCopyLeavesTheSegmentAlone()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        for (int start = 0; start < 3; ++start) {
            SingleInstance second(m_key);
            QCOMPARE(second.claim(), Role::Second);
        }
        first.publish(1, 2);
        QSharedMemory segment(m_key);
        QVERIFY(segment.attach());
    }

    void aReleasedGuardMakesRoomForTheNext()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        first.release();
        SingleInstance next(m_key);
        QCOMPARE(next.claim(), Role::First);
    }

    void afterReleaseNothingIsPublished()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        first.release();
        const MessageCapture capture;
        first.publish(1, 2);
        QVERIFY(capture.texts().isEmpty());
    }

    void aDozenAtOnceLeaveExactlyOne()
    {
        for (int round = 0; round < 5; ++round) {
            constexpr int kCopies = 12;
            std::vector<std::unique_ptr<SingleInstance>> copies;
            copies.reserve(kCopies);
            for (int copy = 0; copy < kCopies; ++copy)
                copies.push_back(std::make_unique<SingleInstance>(m_key));
            std::atomic<int> waiting = kCopies;
            std::atomic<int> firsts = 0;
            std::atomic<int> seconds = 0;
            const auto start = [&](int copy) {
                --waiting;
                while (waiting > 0)
                    std::this_thread::yield();
                const Role role = copies.at(static_cast<std::size_t>(copy))->claim();
                firsts += role == Role::First ? 1 : 0;
                seconds += role == Role::Second ? 1 : 0;
            };
            std::vector<std::thread> threads;
            threads.reserve(kCopies);
            for (int copy = 0; copy < kCopies; ++copy)
                threads.emplace_back(start, copy);
            for (std::thread& thread : threads)
                thread.join();
            QCOMPARE(firsts.load(), 1);
            QCOMPARE(seconds.load(), kCopies - 1);
        }
    }
};

int main(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const QCoreApplication application(argc, argv);
    TestSingleInstance test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_singleinstance.moc"
