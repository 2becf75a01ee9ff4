#include "engine/resumemeeting.h"
#include "tests/support/testrun.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <cstdint>
#include <thread>

namespace {

constexpr std::uint64_t kMoment = 1000;

/// A line's call, on a thread of its own.
class Call
{
public:
    template <typename Function>
    explicit Call(Function function)
        : m_thread([this, function] {
            function();
            m_returned = true;
        })
    {}
    ~Call() { m_thread.join(); }

    bool hasReturned() const { return m_returned; }

private:
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
        ResumeMeeting meeting;
        meeting.pictureArrives(kMoment);
        meeting.soundHasPassed(980, kMoment);
        QVERIFY(meeting.waitUntilOver(0));
    }

    void nobodyWaitsBeforeTheMoment()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        meeting.pictureArrives(970);
        meeting.soundHasPassed(940, 960);
        QVERIFY(!meeting.waitUntilOver(0));
    }

    void earlyPictureWaitsForTheSound()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
        QTest::qWait(50);
        meeting.soundHasPassed(940, 960);
        QTest::qWait(50);
        QVERIFY(!picture.hasReturned());
        // The block in which the moment lies.
        meeting.soundHasPassed(990, 1010);
        QTRY_VERIFY(picture.hasReturned());
        QVERIFY(meeting.waitUntilOver(0));
    }

    void earlySoundWaitsForThePictureBeforeTheBlockWithTheMoment()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        const Call sound([&meeting] {
            meeting.soundHasPassed(970, 990);
            meeting.soundHasPassed(990, 1010);
        });
        QTest::qWait(50);
        meeting.pictureArrives(970);
        QTest::qWait(50);
        QVERIFY(!sound.hasReturned());
        meeting.pictureArrives(kMoment);
        QTRY_VERIFY(sound.hasReturned());
        QVERIFY(meeting.waitUntilOver(0));
    }

    void soundThatEndsAtTheMomentHasPassedIt()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        meeting.soundHasPassed(980, kMoment);
        meeting.pictureArrives(kMoment);
        QVERIFY(meeting.waitUntilOver(0));
    }

    void nobodyWaitsAfterwards()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        meeting.soundHasPassed(990, 1010);
        meeting.pictureArrives(kMoment);
        meeting.pictureArrives(1030);
        meeting.soundHasPassed(1010, 1030);
        QVERIFY(meeting.waitUntilOver(0));
    }

    void newMeetingHoldsNobodyWhoWaitsForTheOneCalledOff()
    {
        ResumeMeeting meeting;
        constexpr std::uint64_t kLater = 2 * kMoment;
        for (int round = 0; round < 20; ++round) {
            meeting.appoint(kMoment);
            const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
            QTest::qWait(10);
            QElapsedTimer timer;
            timer.start();
            // At once: the picture's line has had no time to notice.
            meeting.callOff();
            meeting.appoint(kLater);
            QTRY_VERIFY(picture.hasReturned());
            QVERIFY(timer.elapsed() < 500);
            QVERIFY(!meeting.waitUntilOver(0));
        }
    }

    void calledOffMeetingHoldsNobody()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        const Call picture([&meeting] { meeting.pictureArrives(kMoment); });
        QTest::qWait(50);
        QVERIFY(!picture.hasReturned());
        meeting.callOff();
        QTRY_VERIFY(picture.hasReturned());
        QVERIFY(meeting.waitUntilOver(0));
    }

    void lineThatNeverComesHoldsTheOtherForASecond()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        QElapsedTimer timer;
        timer.start();
        meeting.pictureArrives(kMoment);
        QVERIFY(timer.elapsed() >= 900 && timer.elapsed() < 5000);
        QVERIFY(meeting.waitUntilOver(0));
    }

    void waitingForTheMeetingEndsWithIt()
    {
        ResumeMeeting meeting;
        meeting.appoint(kMoment);
        const Call lines([&meeting] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            meeting.soundHasPassed(990, 1010);
            meeting.pictureArrives(kMoment);
        });
        QVERIFY(meeting.waitUntilOver(10'000));
    }
};

REGISTER_TEST(testrun::core<TestResumeMeeting>);
#include "test_resumemeeting.moc"
