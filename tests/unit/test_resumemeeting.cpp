#include "engine/core/enginetimings.h"
#include "engine/output/resumemeeting.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace {

constexpr std::uint64_t kMoment = 1000;
/// A line that waits for so long waits for ever.
constexpr std::chrono::hours kForEver{1};
constexpr std::chrono::milliseconds kNow{0};

/// A line's call, on a thread of its own.
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

/// A block of sound lasts 20 here, a picture 30.
class TestResumeMeeting : public QObject
{
    Q_OBJECT

private slots:
    void nobodyWaitsWithoutAMeeting()
    {
        ResumeMeeting meeting(kForEver);
        meeting.pictureArrives(kMoment);
        meeting.soundHasPassed(980, kMoment);
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void nobodyWaitsBeforeTheMoment()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        meeting.pictureArrives(970);
        meeting.soundHasPassed(940, 960);
        QVERIFY(!meeting.waitUntilOver(kNow));
    }

    void earlyPictureWaitsForTheSound()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
        QVERIFY(picture.waits());
        meeting.soundHasPassed(940, 960);
        QVERIFY(picture.waits());
        // The block in which the moment lies.
        meeting.soundHasPassed(990, 1010);
        QTRY_VERIFY(picture.hasReturned());
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void earlySoundWaitsForThePictureBeforeTheBlockWithTheMoment()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        const Call sound([&meeting] {
            meeting.soundHasPassed(970, 990);
            meeting.soundHasPassed(990, 1010);
        });
        QVERIFY(sound.waits());
        meeting.pictureArrives(970);
        QVERIFY(sound.waits());
        meeting.pictureArrives(kMoment);
        QTRY_VERIFY(sound.hasReturned());
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void soundThatEndsAtTheMomentHasPassedIt()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        meeting.soundHasPassed(980, kMoment);
        meeting.pictureArrives(kMoment);
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void nobodyWaitsAfterwards()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        meeting.soundHasPassed(990, 1010);
        meeting.pictureArrives(kMoment);
        meeting.pictureArrives(1030);
        meeting.soundHasPassed(1010, 1030);
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void newMeetingHoldsNobodyWhoWaitsForTheOneCalledOff()
    {
        ResumeMeeting meeting(kForEver);
        constexpr std::uint64_t kLater = 2 * kMoment;
        for (int round = 0; round < 20; ++round) {
            meeting.appoint(kMoment);
            const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
            QVERIFY(picture.waits());
            // At once: the picture's line has had no time to notice.
            meeting.callOff();
            meeting.appoint(kLater);
            QTRY_VERIFY(picture.hasReturned());
            QVERIFY(!meeting.waitUntilOver(kNow));
        }
    }

    void calledOffMeetingHoldsNobody()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
        QVERIFY(picture.waits());
        meeting.callOff();
        QTRY_VERIFY(picture.hasReturned());
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void lineThatNeverComesHoldsTheOtherForTheLimit()
    {
        constexpr std::chrono::milliseconds kLimit{50};
        ResumeMeeting meeting(kLimit);
        meeting.appoint(kMoment);
        QElapsedTimer timer;
        timer.start();
        meeting.pictureArrives(kMoment);
        QVERIFY2(timer.elapsed() >= kLimit.count(), qPrintable(QString::number(timer.elapsed())));
        QVERIFY(meeting.waitUntilOver(kNow));
    }

    void limitIsASecond() { QCOMPARE(EngineTimings().resumeLimit, std::chrono::seconds(1)); }

    void waitingForTheMeetingEndsWithIt()
    {
        ResumeMeeting meeting(kForEver);
        meeting.appoint(kMoment);
        const Call lines([&meeting] {
            // Usually after the wait has begun.
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            meeting.soundHasPassed(990, 1010);
            meeting.pictureArrives(kMoment);
        });
        QVERIFY(meeting.waitUntilOver(kForEver));
    }
};

REGISTER_TEST(testrun::core<TestResumeMeeting>);
#include "test_resumemeeting.moc"
