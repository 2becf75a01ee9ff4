// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/singleinstance.h"
#include "platform/process/instance_lock.h"
#include "platform/process/shared_segment.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSharedMemory>
#include <QTest>
#include <QThread>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

using Role = SingleInstance::Role;

namespace {

constexpr int kTimeoutMs = 20'000;
/// For claims that meet an instance which never gives way.
constexpr std::chrono::milliseconds kShortInterval{5};

/// Another instance of the program that is stopped, where this test program plays it (see run()).
class StandingInstance
{
public:
    /// @param with what it holds: "gate", "lock", "segment".
    StandingInstance(const QString& key, const QStringList& with) : m_segment(key)
    {
        m_process.start(QCoreApplication::applicationFilePath(),
                        QStringList{"test_singleinstance", "stand-still", key} + with);
        m_isThere = m_process.waitForReadyRead(kTimeoutMs) && m_process.readLine().trimmed() == "there";
    }
    ~StandingInstance()
    {
        kill();
        // Where its segment outlives it, this removes it.
        if (m_segment.attach())
            m_segment.detach();
    }
    StandingInstance(const StandingInstance&) = delete;
    StandingInstance& operator=(const StandingInstance&) = delete;

    bool isThere() const { return m_isThere; }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(kTimeoutMs);
    }

private:
    platform::SharedSegment m_segment;
    QProcess m_process;
    bool m_isThere = false;
};

/// What StandingInstance runs; does not return before it is killed.
int standStill(const QString& key, const QStringList& with)
{
    platform::InstanceLock gate(SingleInstance::gateName(key));
    platform::InstanceLock lock(key);
    platform::SharedSegment segment(key);
    if (with.contains("gate"))
        gate.tryLock();
    if (with.contains("lock"))
        lock.tryLock();
    if (with.contains("segment") && !segment.create(16))
        return 1;
    std::puts("there");
    std::fflush(stdout);
    for (;;)
        QThread::sleep(1);
}

} // namespace

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

    void theFirstInstanceMakesTheSegmentAndSaysSo()
    {
        const MessageCapture capture;
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        QCOMPARE(capture.texts(),
                 QStringList({"Logger not initialized, cannot write: Info: Created shared memory for single instance",
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

    void aSecondInstanceDuringTheFirstOnesStartFindsNoWindow()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        SingleInstance second(m_key);
        const MessageCapture capture;
        QCOMPARE(second.claim(), Role::Second);
        QVERIFY(capture.texts().isEmpty());
        second.handOver();
        QCOMPARE(capture.texts(),
                 QStringList({"Logger not initialized, cannot write: Error: Stored window handle is invalid",
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

    void theSecondInstanceLeavesTheSegmentAlone()
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

    void anInstanceKilledInsideTheGateLeavesItOpen_data()
    {
        QTest::addColumn<QStringList>("with");
        QTest::newRow("gate") << QStringList{"gate"};
        QTest::newRow("gate and lock") << QStringList{"gate", "lock"};
        QTest::newRow("gate, lock and segment") << QStringList{"gate", "lock", "segment"};
    }

    void anInstanceKilledInsideTheGateLeavesItOpen()
    {
        QFETCH(const QStringList, with);
        StandingInstance killed(m_key, with);
        QVERIFY(killed.isThere());
        killed.kill();
        {
            platform::InstanceLock gate(SingleInstance::gateName(m_key));
            const auto state = gate.tryLock();
            QVERIFY(state == platform::InstanceLock::State::Acquired ||
                    state == platform::InstanceLock::State::NotNeeded);
        }
        SingleInstance next(m_key);
        QCOMPARE(next.claim(), Role::First);
        next.publish(1, QCoreApplication::applicationPid());
        SingleInstance second(m_key);
        QCOMPARE(second.claim(), Role::Second);
    }

    void anInstanceStoppedInsideTheGateIsPassedBy()
    {
        const StandingInstance stopped(m_key, {"gate"});
        QVERIFY(stopped.isThere());
        SingleInstance next(m_key, kShortInterval);
        QCOMPARE(next.claim(), Role::First);
    }

    void theFirstInstanceIsFoundBehindAGateThatSomebodyStoppedIn()
    {
        SingleInstance first(m_key);
        QCOMPARE(first.claim(), Role::First);
        const StandingInstance stopped(m_key, {"gate"});
        QVERIFY(stopped.isThere());
        SingleInstance second(m_key, kShortInterval);
        QCOMPARE(second.claim(), Role::Second);
    }

    void anAttemptTakesFiftyMilliseconds()
    {
        QCOMPARE(SingleInstance::kAttemptInterval, std::chrono::milliseconds(50));
    }

    void aSegmentCanBeMadeAgainByTheObjectThatGaveItUp()
    {
        platform::SharedSegment segment(m_key);
        for (int time = 0; time < 2; ++time) {
            QVERIFY2(segment.create(16), qPrintable(segment.errorString()));
            segment.detach();
        }
    }

    void anAttachedSegmentIsKeptByFurtherCalls()
    {
        platform::SharedSegment segment(m_key);
        QVERIFY2(segment.create(16), qPrintable(segment.errorString()));
        QVERIFY(!segment.attach());
        QVERIFY(!segment.create(16));
        QVERIFY(segment.isAttached());
        platform::SharedSegment other(m_key);
        QVERIFY2(other.attach(), qPrintable(other.errorString()));
    }

    void aSmallerSegmentIsNotRead()
    {
        QSharedMemory small(m_key);
        QVERIFY(small.create(8));
        platform::SharedSegment segment(m_key);
        QVERIFY(segment.attach());
        std::array<char, 8> bytes{};
        QVERIFY(segment.read(bytes.data(), bytes.size()));
        QVERIFY(!segment.read(bytes.data(), small.size() + 1));
    }

    void aSegmentThatTurnsOutToExistCanBeAttached()
    {
        platform::SharedSegment theirs(m_key);
        QVERIFY(theirs.create(16));
        platform::SharedSegment ours(m_key);
        for (int time = 0; time < 2; ++time) {
            QVERIFY(!ours.create(16));
            QCOMPARE(ours.error(), QSharedMemory::AlreadyExists);
            QVERIFY2(ours.attach(), qPrintable(ours.errorString()));
            ours.detach();
        }
        theirs.detach();
        QVERIFY2(ours.create(16), qPrintable(ours.errorString()));
    }

    void aDozenAtOnceLeaveExactlyOne()
    {
        for (int round = 0; round < 5; ++round) {
            constexpr int kInstances = 12;
            std::vector<std::unique_ptr<SingleInstance>> instances;
            instances.reserve(kInstances);
            for (int instance = 0; instance < kInstances; ++instance)
                instances.push_back(std::make_unique<SingleInstance>(m_key));
            std::atomic<int> waiting = kInstances;
            std::atomic<int> firsts = 0;
            std::atomic<int> seconds = 0;
            const auto start = [&](int instance) {
                --waiting;
                while (waiting > 0)
                    std::this_thread::yield();
                const Role role = instances.at(static_cast<std::size_t>(instance))->claim();
                firsts += role == Role::First ? 1 : 0;
                seconds += role == Role::Second ? 1 : 0;
            };
            std::vector<std::thread> threads;
            threads.reserve(kInstances);
            for (int instance = 0; instance < kInstances; ++instance)
                threads.emplace_back(start, instance);
            for (std::thread& thread : threads)
                thread.join();
            QCOMPARE(firsts.load(), 1);
            QCOMPARE(seconds.load(), kInstances - 1);
        }
    }
};

static int run(int argc, char* argv[])
{
    // In the profile of the test that started it.
    if (argc > 2 && QString(argv[1]) == "stand-still")
        return standStill(argv[2], QStringList(argv + 3, argv + argc));
    const TestProfile profile;
    appidentity::apply();
    const QCoreApplication application(argc, argv);
    TestSingleInstance test;
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_singleinstance.moc"
