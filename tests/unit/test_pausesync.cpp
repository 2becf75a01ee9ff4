// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginetimings.h"
#include "engine/output/pausesync.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace {

constexpr std::uint64_t kMoment = 1000;
/// A stream that waits for so long waits for ever.
constexpr std::chrono::hours kForEver{1};
constexpr std::chrono::milliseconds kNow{0};

/// A stream's call, on a thread of its own.
class Call
{
public:
    template <typename Function>
    explicit Call(Function function)
        : m_thread([this, function] {
            m_hasBegun = true;
            function();
            m_returned = true;
        })
    {}
    ~Call() { m_thread.join(); }

    bool hasReturned() const { return m_returned; }

    /// Whether the stream is blocked: it has begun, and one that is not blocked would have returned by now. On a
    /// machine so busy that it would not, the answer is right for the wrong reason.
    bool waits() const
    {
        constexpr int kAmpleMs = 10;
        if (!QTest::qWaitFor([this] { return m_hasBegun.load(); }))
            return false;
        QTest::qWait(kAmpleMs);
        return !m_returned;
    }

private:
    std::atomic<bool> m_hasBegun{false};
    std::atomic<bool> m_returned{false};
    std::thread m_thread;
};

} // namespace

/// A block of audio lasts 20 here, a frame 30.
class TestPauseSync : public QObject
{
    Q_OBJECT

private slots:
    void nobodyWaitsUnscheduled()
    {
        PauseSync sync(kForEver);
        sync.videoArrives(kMoment);
        sync.audioHasPassed(980, kMoment);
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void nobodyWaitsBeforeTheMoment()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        sync.videoArrives(970);
        sync.audioHasPassed(940, 960);
        QVERIFY(!sync.waitUntilDone(kNow));
    }

    void earlyVideoWaitsForTheAudio()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        const Call video([&sync] { sync.videoArrives(kMoment); });
        QVERIFY(video.waits());
        sync.audioHasPassed(940, 960);
        QVERIFY(video.waits());
        // The block in which the moment lies.
        sync.audioHasPassed(990, 1010);
        QTRY_VERIFY(video.hasReturned());
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void earlyAudioWaitsForTheVideoBeforeTheBlockWithTheMoment()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        const Call audio([&sync] {
            sync.audioHasPassed(970, 990);
            sync.audioHasPassed(990, 1010);
        });
        QVERIFY(audio.waits());
        sync.videoArrives(970);
        QVERIFY(audio.waits());
        sync.videoArrives(kMoment);
        QTRY_VERIFY(audio.hasReturned());
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void audioThatEndsAtTheMomentHasPassedIt()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        sync.audioHasPassed(980, kMoment);
        sync.videoArrives(kMoment);
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void nobodyWaitsAfterwards()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        sync.audioHasPassed(990, 1010);
        sync.videoArrives(kMoment);
        sync.videoArrives(1030);
        sync.audioHasPassed(1010, 1030);
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void newMomentBlocksNobodyWhoWaitsForTheCancelledOne()
    {
        PauseSync sync(kForEver);
        constexpr std::uint64_t kLater = 2 * kMoment;
        for (int round = 0; round < 20; ++round) {
            sync.schedule(kMoment);
            const Call video([&sync] { sync.videoArrives(kMoment); });
            QVERIFY(video.waits());
            // At once: the frame's stream has had no time to notice.
            sync.cancel();
            sync.schedule(kLater);
            QTRY_VERIFY(video.hasReturned());
            QVERIFY(!sync.waitUntilDone(kNow));
        }
    }

    void cancelledMomentBlocksNobody()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        const Call video([&sync] { sync.videoArrives(kMoment); });
        QVERIFY(video.waits());
        sync.cancel();
        QTRY_VERIFY(video.hasReturned());
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void streamThatNeverComesBlocksTheOtherForTheLimit()
    {
        constexpr std::chrono::milliseconds kLimit{50};
        PauseSync sync(kLimit);
        sync.schedule(kMoment);
        QElapsedTimer timer;
        timer.start();
        sync.videoArrives(kMoment);
        QVERIFY2(timer.elapsed() >= kLimit.count(), qPrintable(QString::number(timer.elapsed())));
        QVERIFY(sync.waitUntilDone(kNow));
    }

    void limitIsASecond() { QCOMPARE(EngineTimings().resumeLimit, std::chrono::seconds(1)); }

    void waitEndsWhenBothHavePassed()
    {
        PauseSync sync(kForEver);
        sync.schedule(kMoment);
        const Call streams([&sync] {
            // Usually after the wait has begun.
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            sync.audioHasPassed(990, 1010);
            sync.videoArrives(kMoment);
        });
        QVERIFY(sync.waitUntilDone(kForEver));
    }
};

REGISTER_TEST(testrun::core<TestPauseSync>);
#include "test_pausesync.moc"
