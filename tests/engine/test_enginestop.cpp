// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "engine/capture/blackframes.h"
#include "engine/capture/screenvideo.h"
#include "engine/core/obshandles.h"
#include "engine/obswrapper.h"
#include "engine/output/recordingformat.h"
#include "engine/output/retiredoutputs.h"
#include "engine/output/streamtap.h"
#include "engine/ports.h"
#include "tests/engine/enginerecordingtest.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <util/platform.h>
#include <utility>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <malloc.h>
#include <thread>

using standins::behaviour;

namespace {

int memoryReturns = 0;

} // namespace

/// The C library's: gives memory that was freed back to the system.
extern "C" int malloc_trim(size_t /*pad*/) noexcept
{
    ++memoryReturns;
    return 0;
}

/// How a recording ends: by itself, at the wrong moment, on another thread, or as requested.
class TestEngineStop : public EngineRecordingTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(standins::startCore());
        standins::registerSources();
        standins::registerOutputs();
    }

    void outputThatEndedByItselfIsReleasedLater()
    {
        EngineTimings timings = quickTimings();
        timings.release.delay = std::chrono::milliseconds(300);
        make(timings);
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QElapsedTimer timer;
        timer.start();
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(m_wrapper->createOutputMode());
        QTRY_COMPARE(standins::countOf("destroy output"), 1);
        QVERIFY2(timer.elapsed() >= timings.release.delay.count(), qPrintable(QString::number(timer.elapsed())));
    }

    void deferredReleaseBlocksNobody()
    {
        EngineTimings timings = quickTimings();
        timings.release.delay = std::chrono::hours(1);
        make(timings);
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(m_wrapper->createOutputMode());
        QCOMPARE(standins::countOf("destroy output"), 0);
    }

    void outputIsReleasedAfterTenSeconds()
    {
        const DeferredRelease times = EngineTimings().release;
        QCOMPARE(times.delay, std::chrono::seconds(10));
        QCOMPARE(times.shortestDelay, std::chrono::seconds(1));
        QCOMPARE(times.busyLimit, std::chrono::seconds(5));
    }

    void framesFlowThoughTheLastRecordingsEndArrivesAfterTheSetUp()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR); }).join();
        setup(1);
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->startRecording(), 0);
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
    }

    void stopAfterARecordingThatEndedByItselfSignalsNothing()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(!m_wrapper->isRecording());
        QVERIFY(!m_wrapper->isRecordingPaused());
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void stopHandlerIsTakenOffByTheEndItself()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        obsspy::clear();
        signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR);
        QCOMPARE(obsspy::calls(), QStringList{"signal_handler_disconnect stop"});
        obsspy::clear();
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(!obsspy::calls().contains("signal_handler_disconnect stop"));
    }

    void engineIsIdleAfterARecordingThatEndedByItself()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QVERIFY(obs_video_active());
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_VERIFY(!obs_video_active());
    }

    void startInsideTheSignalOfTheEndIsRefused()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        int result = 0;
        connect(
            m_wrapper.get(), &ObsWrapper::recordStatusChanged, m_wrapper.get(),
            [this, &result](int) {
                setup(1);
                result = m_wrapper->startRecording();
            },
            Qt::DirectConnection);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(result, -1);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
    }

    void stopBeforeTheHandlerIsConnectedEndsWithStatusTwoOnce()
    {
        behaviour().duringStart = [](obs_output_t* output) {
            obs_output_set_last_error(output, "no such folder");
            signalStop(output, OBS_OUTPUT_CONNECT_FAILED);
        };
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_CONNECT_FAILED);
        QCOMPARE(m_wrapper->stopReason().text, QStringLiteral("no such folder"));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void stopBeforeTheHandlerIsConnectedOnAFailingStartEndsWithStatusTwoOnce()
    {
        behaviour().outputStarts = false;
        behaviour().duringStart = [](obs_output_t* output) { signalStop(output, OBS_OUTPUT_ERROR); };
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), -1);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void stopWhileItsHandlerIsBeingConnectedEndsWithStatusTwoOnce_data()
    {
        QTest::addColumn<bool>("isAwaited");
        QTest::addColumn<bool>("isConnected");
        QTest::newRow("before") << true << false;
        QTest::newRow("at the same moment") << false << false;
        QTest::newRow("after") << true << true;
    }

    void stopWhileItsHandlerIsBeingConnectedEndsWithStatusTwoOnce()
    {
        QFETCH(const bool, isAwaited);
        QFETCH(const bool, isConnected);
        std::thread disk;
        const auto fail = [&disk, isAwaited] {
            disk = std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); });
            if (isAwaited)
                disk.join();
        };
        behaviour().duringStart = keepOpening;
        setup(0);
        obsspy::aroundSecondStopConnection(isConnected ? std::function<void()>() : fail,
                                           isConnected ? fail : std::function<void()>());
        QCOMPARE(m_wrapper->startRecording(), 0);
        if (disk.joinable())
            disk.join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_NO_SPACE);
        QVERIFY(waitForWholeEnd(standins::currentOutput()));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void failingStartKeepsTheReasonOfItsStop()
    {
        behaviour().outputStarts = false;
        behaviour().duringStart = [](obs_output_t* output) { signalStop(output, OBS_OUTPUT_NO_SPACE); };
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), -1);
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_NO_SPACE);
    }

    void outputThatStopsByItselfEndsWithStatusTwoOnce()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        StopReason seen;
        connect(
            m_wrapper.get(), &ObsWrapper::recordStatusChanged, m_wrapper.get(),
            [this, &seen](int) { seen = m_wrapper->stopReason(); }, Qt::DirectConnection);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        // Known before the status was signalled.
        QCOMPARE(seen.code, OBS_OUTPUT_NO_SPACE);
        QVERIFY(!m_wrapper->isRecording());
        signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR);
        QVERIFY(waitForWholeEnd(standins::currentOutput()));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_NO_SPACE);
    }

    void statusOfAnotherThreadArrivesQueued()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QThread* receivedOn = nullptr;
        QObject receiver;
        connect(m_wrapper.get(), &ObsWrapper::recordStatusChanged, &receiver,
                [&receivedOn](int) { receivedOn = QThread::currentThread(); });
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_SUCCESS); }).join();
        QCOMPARE(receivedOn, static_cast<QThread*>(nullptr));
        QTRY_COMPARE(receivedOn, thread());
    }

    void outputThatFailsWhileTheDiskCatchesUpIsNotStoppedOnceMore()
    {
        // Bytes are written each time the end is asked for; the disk is full before they all are.
        std::atomic<uint64_t> looks{0};
        behaviour().bytesWritten = [&looks]() -> uint64_t { return ++looks; };
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        obs_output_t* output = standins::currentOutput();
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY(!m_wrapper->isRecordingEndReached() && looks > 3);
        std::thread([output] { signalStop(output, OBS_OUTPUT_NO_SPACE); }).join();
        QVERIFY(m_wrapper->isRecordingEndReached());
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(!standins::events().contains("stop output"));
        QVERIFY(!standins::events().contains("force stop output"));
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_NO_SPACE);
        QVERIFY(waitForWholeEnd(output));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void forcedStopOfAnOutputThatFailedStopsItNotOnceMore()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QCOMPARE(m_wrapper->stopRecording(true), 0);
        QVERIFY(!standins::events().contains("force stop output"));
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void nextRecordingAfterOneThatStoppedByItself()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR); }).join();
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QVERIFY(m_wrapper->isRecording());
        QCOMPARE(m_wrapper->stopReason().code, 0);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2, 0, 2}));
    }

    void receiverMayPrepareTheNextRecordingInsideTheStop()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        connect(m_wrapper.get(), &ObsWrapper::recordStatusChanged, m_wrapper.get(), [this](int status) {
            if (status == recordstatus::kEnded)
                setup(1);
        });
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(standins::countOf("create output"), 2);
        QTRY_COMPARE(standins::countOf("destroy output"), 1);
    }

    void wrapperGoesWhileTheOutputIsStopping()
    {
        constexpr int kRounds = 6;
        for (int round = 0; round < kRounds; ++round) {
            ObsWrapper wrapper(standins::platform(), quickTimings());
            wrapper.setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, 1);
            QCOMPARE(wrapper.startRecording(), 0);
            obs_output_t* output = obs_output_get_ref(standins::currentOutput());
            std::thread stopper([output] {
                signalStop(output, OBS_OUTPUT_SUCCESS);
                while (obs_output_active(output))
                    QThread::msleep(1);
                obs_output_release(output);
            });
            stopper.detach();
        }
        // The threads' outputs go with them.
        QTRY_COMPARE(standins::countOf("destroy output"), kRounds);
    }

    void resetVideoWhileRecordingIsRefusedAndAfterwardsAllowed()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), OBS_VIDEO_CURRENTLY_ACTIVE);
        QVERIFY(m_wrapper->isRecording());
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
    }

    void pauseAndResumeReachTheOutputAndSendNoStatus()
    {
        setup(0);
        QVERIFY(m_wrapper->canPauseRecording());
        QVERIFY(!m_wrapper->pauseRecording(true));
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        const PassingFrames frames;
        obsspy::clear();
        QVERIFY(m_wrapper->pauseRecording(true));
        QVERIFY(m_wrapper->pauseRecording(true));
        QVERIFY(m_wrapper->isRecordingPaused());
        QVERIFY(m_wrapper->isRecording());
        // Frames from before the pause may still be on their way.
        const auto countStands = [this, &frames] {
            const quint64 before = m_wrapper->recordedFrames();
            return frames.waitFor(5) && m_wrapper->recordedFrames() == before;
        };
        QTRY_VERIFY(countStands());
        const quint64 paused = m_wrapper->recordedFrames();
        QVERIFY(frames.waitFor(5));
        QCOMPARE(m_wrapper->recordedFrames(), paused);
        QVERIFY(m_wrapper->pauseRecording(false));
        QVERIFY(!m_wrapper->isRecordingPaused());
        QTRY_VERIFY(m_wrapper->recordedFrames() > paused);
        QCOMPARE(obsspy::calls(), (QStringList{"obs_output_pause 1", "obs_output_pause 0"}));
        QCOMPARE(statuses(*m_status), QList<int>{0});
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void pauseFollowedAtOnceByAResumeAndAPauseWaitsForThem()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        for (int i = 0; i < 5; ++i) {
            QVERIFY(m_wrapper->pauseRecording(true));
            QVERIFY(m_wrapper->pauseRecording(false));
        }
        const quint64 before = m_wrapper->recordedFrames();
        QTRY_VERIFY(m_wrapper->recordedFrames() > before + 3);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void outputThatCannotPauseGoesOn()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        obsspy::failAt(QStringLiteral("obs_output_can_pause"));
        QVERIFY(!m_wrapper->canPauseRecording());
        QVERIFY(!m_wrapper->pauseRecording(true));
        obsspy::failNowhere();
        obsspy::failAt(QStringLiteral("obs_output_pause"));
        QVERIFY(!m_wrapper->pauseRecording(true));
        QVERIFY(!m_wrapper->isRecordingPaused());
        const quint64 before = m_wrapper->recordedFrames();
        QTRY_VERIFY(m_wrapper->recordedFrames() > before);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void endRequestedWhilePausedIsReached()
    {
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        QVERIFY(m_wrapper->pauseRecording(true));
        QVERIFY(PassingFrames().waitFor(5));
        m_wrapper->requestRecordingEnd();
        QVERIFY(!m_wrapper->isRecordingPaused());
        QVERIFY(!m_wrapper->isRecordingEndReached());
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void pausedOutputThatEndsByItselfIsPausedNoMore()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        QVERIFY(m_wrapper->pauseRecording(true));
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_NO_SPACE); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecordingPaused());
        QVERIFY(!m_wrapper->pauseRecording(true));
    }

    void streamsThatHaveReachedTheEndAreBlockedUntilTheStop()
    {
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        // The frame that was on its way then has arrived.
        QVERIFY(waitForRenderedFrames(3));
        const quint64 atEnd = m_wrapper->recordedFrames();
        QVERIFY(waitForRenderedFrames(6));
        QCOMPARE(m_wrapper->recordedFrames(), atEnd);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        // And go on afterwards.
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 3);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void sceneIsTakenOffOnlyWhenTheRecordingHasEnded()
    {
        standins::registerFadeTransition();
        QCOMPARE(m_wrapper->setupScene(1), 0);
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        m_wrapper->setSceneRendered(false);
        QVERIFY(m_wrapper->isSceneRendered());
        // Whoever hears of the end, even inside the stop, may do so.
        connect(
            m_wrapper.get(), &ObsWrapper::recordStatusChanged, m_wrapper.get(),
            [this] { m_wrapper->setSceneRendered(false); }, Qt::DirectConnection);
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(!m_wrapper->isSceneRendered());
    }

    void resetVideoAfterARecordingThatStoppedByItself()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_ERROR); }).join();
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QTRY_COMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
    }

    void endIsReachedOnlyAfterItWasRequestedAndEncoded()
    {
        setup(0);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 3);
        QVERIFY(!m_wrapper->isRecordingEndReached());
        const quint64 atRequest = m_wrapper->recordedFrames();
        m_wrapper->requestRecordingEnd();
        QVERIFY(!m_wrapper->isRecordingEndReached());
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        QVERIFY(m_wrapper->recordedFrames() > atRequest + static_cast<quint64>(m_wrapper->encoderDelayFrames()));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QVERIFY(m_wrapper->isRecordingEndReached());
        QVERIFY(m_wrapper->recordedFrames() > atRequest);
    }

    void onlyTheFirstRequestOfTheEndCounts()
    {
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        // Audio reaches the end a certain time after it: put off by a second request, it would not be reached here.
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY(m_wrapper->isRecordingEndReached());
        m_wrapper->requestRecordingEnd();
        QVERIFY(m_wrapper->isRecordingEndReached());
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void endMayBeRequestedWhileTheFileIsBeingOpened_data()
    {
        QTest::addColumn<int>("format");
        // Both ends would be reached by the frames and the audio that pass while the file is being opened.
        QTest::newRow("frame") << 1;
        QTest::newRow("video that the encoder buffers for long") << 0;
        QTest::newRow("sound only") << 5;
    }

    void endMayBeRequestedWhileTheFileIsBeingOpened()
    {
        QFETCH(const int, format);
        behaviour().duringStart = [this](obs_output_t*) { m_wrapper->requestRecordingEnd(); };
        setup(format);
        QCOMPARE(m_wrapper->startRecording(), 0);
        obs_output_t* output = standins::currentOutput();
        // What passes now never reaches the encoder.
        QVERIFY(PassingFrames().waitFor(m_wrapper->encoderDelayFrames() + kFramesOfAnEnd));
        QVERIFY(!m_wrapper->isRecordingEndReached());
        QVERIFY(obs_output_begin_data_capture(output, 0));
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        if (hasVideo(recordingFormatFromIndex(format)))
            QVERIFY(m_wrapper->recordedFrames() > static_cast<quint64>(m_wrapper->encoderDelayFrames()));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void endIsReachedWhenTheFileCannotBeOpened()
    {
        behaviour().duringStart = keepOpening;
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        m_wrapper->requestRecordingEnd();
        QVERIFY(PassingFrames().waitFor(kFramesOfAnEnd));
        QVERIFY(!m_wrapper->isRecordingEndReached());
        std::thread([] { signalStop(standins::currentOutput(), OBS_OUTPUT_CONNECT_FAILED); }).join();
        QVERIFY(m_wrapper->isRecordingEndReached());
        QTRY_COMPARE(statuses(*m_status), (QList<int>{0, 2}));
    }

    void outputThatOpensItsFileTooSlowlyIsStoppedWhenItRuns_data()
    {
        QTest::addColumn<bool>("nextRecordingRuns");
        QTest::newRow("nothing is recorded then") << false;
        QTest::newRow("the next recording runs then") << true;
    }

    void outputThatOpensItsFileTooSlowlyIsStoppedWhenItRuns()
    {
        QFETCH(const bool, nextRecordingRuns);
        behaviour().duringStart = keepOpening;
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        obs_output_t* output = standins::currentOutput();
        QCOMPARE(m_wrapper->stopRecording(false), 0);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        QCOMPARE(m_wrapper->stopReason().code, OBS_OUTPUT_CONNECT_FAILED);
        QCOMPARE(standins::countOf("destroy output"), 0);
        // It would begin on video that has gone.
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), OBS_VIDEO_CURRENTLY_ACTIVE);
        if (nextRecordingRuns) {
            behaviour().duringStart = nullptr;
            setup(1);
            QCOMPARE(m_wrapper->startRecording(), 0);
        }
        QVERIFY(obs_output_begin_data_capture(output, 0));
        QTRY_COMPARE(standins::countOf("stop output"), 1);
        QTRY_VERIFY(!obs_output_active(output));
        QCOMPARE(m_wrapper->isRecording(), nextRecordingRuns);
        QCOMPARE(statuses(*m_status), nextRecordingRuns ? (QList<int>{0, 2, 0}) : (QList<int>{0, 2}));
        QCOMPARE(standins::countOf("destroy output"), 0);
        m_status.reset();
        m_wrapper.reset();
        QCOMPARE(standins::countOf("destroy output"), nextRecordingRuns ? 2 : 1);
    }

    void outputThatIsReplacedWhileItOpensItsFileIsKept()
    {
        behaviour().duringStart = keepOpening;
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        obs_output_t* output = standins::currentOutput();
        QVERIFY(m_wrapper->createOutputMode());
        QCOMPARE(standins::countOf("destroy output"), 0);
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QVERIFY(!m_wrapper->isRecording());
        std::thread([output] { signalStop(output, OBS_OUTPUT_CONNECT_FAILED); }).join();
        QVERIFY(waitForWholeEnd(output));
        QCOMPARE(statuses(*m_status), (QList<int>{0, 2}));
        QCOMPARE(m_wrapper->resetVideo(640, 480, 640, 480, 30), 0);
    }

    void wrapperGoesWhileTheFileIsBeingOpened()
    {
        behaviour().duringStart = keepOpening;
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        obsspy::clear();
        std::thread opener([output = ObsOutputHandle(obs_output_get_ref(standins::currentOutput()))] {
            // The wrapper has handed it over, and its end is followed from then on.
            while (!obsspy::calls().contains("signal_handler_connect_ref stop"))
                QThread::msleep(1);
            obs_output_begin_data_capture(output.get(), 0);
            for (int waitedMs = 0; obs_output_active(output.get()) && waitedMs < 5000; ++waitedMs)
                QThread::msleep(1);
        });
        m_status.reset();
        m_wrapper.reset();
        opener.join();
        QCOMPARE(standins::countOf("stop output"), 1);
        QCOMPARE(standins::countOf("destroy output"), 1);
    }

    void retiredOutputIsNotReleasedWhileItEnds()
    {
        StreamTap tap(EngineTimings().resumeLimit);
        RetiredOutputs retired(tap);
        ObsOutputHandle started = startedOutput();
        obs_output_t* output = started.get();
        QVERIFY(obs_output_active(output));
        retired.addEnded(std::move(started), nullptr, os_gettime_ns() - kLongAgoNs);
        // One that has ended is released by the same look.
        retired.addEnded(idleOutput(), nullptr, os_gettime_ns() - kLongAgoNs);
        QTRY_COMPARE(standins::countOf("destroy output"), 1);
        obs_output_stop(output);
        QTRY_COMPARE(standins::countOf("destroy output"), 2);
    }

    void memoryIsGivenBackWhileNothingIsRecorded()
    {
        StreamTap tap(EngineTimings().resumeLimit);
        RetiredOutputs retired(tap);
        tap.connect(0, nullptr);
        memoryReturns = 0;
        retired.addEnded(idleOutput(), nullptr, os_gettime_ns() - kLongAgoNs);
        QTRY_COMPARE(standins::countOf("destroy output"), 1);
        QCOMPARE(memoryReturns, 0);
        tap.disconnect();
        retired.addEnded(idleOutput(), nullptr, os_gettime_ns() - kLongAgoNs);
        QTRY_COMPARE(memoryReturns, 1);
    }

    void retiredOutputIsWaitedForWhileItEnds()
    {
        StreamTap tap(EngineTimings().resumeLimit);
        ObsOutputHandle started = startedOutput();
        QVERIFY(obs_output_active(started.get()));
        std::thread ending([output = ObsOutputHandle(obs_output_get_ref(started.get()))] {
            // Usually after the wait has begun.
            QThread::msleep(50);
            obs_output_stop(output.get());
            while (obs_output_active(output.get()))
                QThread::msleep(1);
        });
        {
            RetiredOutputs retired(tap);
            retired.addEnded(std::move(started), nullptr, os_gettime_ns() - kLongAgoNs);
        }
        ending.join();
        QCOMPARE(standins::countOf("destroy output"), 1);
    }

    void retiredOutputThatCannotOpenItsFileIsReleased_data()
    {
        QTest::addColumn<bool>("isFollowed");
        QTest::newRow("known before it is followed") << false;
        QTest::newRow("known afterwards") << true;
    }

    void retiredOutputThatCannotOpenItsFileIsReleased()
    {
        QFETCH(const bool, isFollowed);
        behaviour().duringStart = keepOpening;
        StreamTap tap(EngineTimings().resumeLimit);
        ObsOutputHandle started = startedOutput();
        obs_output_t* output = started.get();
        QVERIFY(output);
        const std::atomic<std::uint64_t> endedNs{isFollowed ? 0 : os_gettime_ns()};
        {
            // Who took it for busy would wait for ever.
            DeferredRelease times = quickTimings().release;
            times.busyLimit = std::chrono::hours(1);
            RetiredOutputs retired(tap, times);
            retired.addStarting(std::move(started), nullptr, endedNs);
            QCOMPARE(retired.isAnyBusy(), isFollowed);
            if (isFollowed)
                std::thread([output] { signalStop(output, OBS_OUTPUT_CONNECT_FAILED); }).join();
            QVERIFY(!retired.isAnyBusy());
        }
        QVERIFY(!standins::events().contains("stop output"));
        QCOMPARE(standins::countOf("destroy output"), 1);
    }

    void retiredOutputIsStoppedWhileItsOwnVideoIsBlocked_data()
    {
        QTest::addColumn<bool>("isTapConnected");
        QTest::newRow("nothing else is recorded") << false;
        QTest::newRow("the engine's video is recorded") << true;
    }

    void retiredOutputIsStoppedWhileItsOwnVideoIsBlocked()
    {
        QFETCH(const bool, isTapConnected);
        const QSize size(2, 2);
        const std::shared_ptr<ScreenVideo> video = ScreenVideo::open(std::make_unique<BlackFrames>(size), size, 100);
        const PassingFrames frames(video->video());
        QVERIFY(frames.waitFor(1));
        int framesDuringStop = -1;
        behaviour().duringStart = keepOpening;
        behaviour().duringStop = [&] {
            const int before = frames.count();
            QThread::msleep(60);
            framesDuringStop = frames.count() - before;
        };
        StreamTap tap(EngineTimings().resumeLimit);
        if (isTapConnected)
            tap.connect(1, nullptr);
        DeferredRelease times = quickTimings().release;
        times.delay = std::chrono::milliseconds(1);
        RetiredOutputs retired(tap, times);
        ObsOutputHandle started = startedOutput(video->video());
        obs_output_t* const output = started.get();
        const std::atomic<std::uint64_t> endedNs{0};
        retired.addStarting(std::move(started), video, endedNs);
        QVERIFY(!retired.waitWhileEnding());
        QVERIFY(obs_output_begin_data_capture(output, 0));
        QTRY_COMPARE(standins::countOf("destroy output"), 1);
        QCOMPARE(framesDuringStop, 0);
        QCOMPARE(tap.isConnected(), isTapConnected);
        QVERIFY(frames.waitFor(1));
    }

    void outputThatNeverOpensItsFileIsLeftBehind()
    {
        behaviour().duringStart = keepOpening;
        StreamTap tap(EngineTimings().resumeLimit);
        ObsOutputHandle started = startedOutput();
        obs_output_t* output = started.get();
        QVERIFY(output);
        {
            const std::atomic<std::uint64_t> endedNs{0};
            DeferredRelease times = quickTimings().release;
            times.busyLimit = std::chrono::milliseconds(50);
            RetiredOutputs retired(tap, times);
            retired.addStarting(std::move(started), nullptr, endedNs);
            retired.addEnded(idleOutput(), nullptr, os_gettime_ns() - kLongAgoNs);
            QTRY_COMPARE(standins::countOf("destroy output"), 1);
            QVERIFY(retired.isAnyBusy());
        }
        QCOMPARE(standins::countOf("destroy output"), 1);
        const ObsOutputHandle leftBehind(output);
    }

    void endIsReachedOnlyWhenTheDiskHasCaughtUp()
    {
        constexpr uint64_t kWrites = 8;
        std::atomic<uint64_t> looks{0};
        behaviour().bytesWritten = [&looks, kWrites]() -> uint64_t { return std::min(++looks, kWrites); };
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(m_wrapper->recordedFrames() > 0);
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        QVERIFY2(looks > kWrites, qPrintable(QString::number(looks.load())));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void endIsReachedOnlyWhenALaggingEncoderHasCaughtUp()
    {
        behaviour().encodeMs = 100;
        setup(1);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QTRY_VERIFY(standins::encodedFrames().size() > 3);
        const std::uint64_t requestNs = os_gettime_ns();
        m_wrapper->requestRecordingEnd();
        QTRY_VERIFY_WITH_TIMEOUT(m_wrapper->isRecordingEndReached(), kEndTimeoutMs);
        const std::vector<std::uint64_t> encoded = standins::encodedFrames();
        const auto after =
            std::count_if(encoded.begin(), encoded.end(), [requestNs](auto taken) { return taken >= requestNs; });
        QVERIFY2(after > m_wrapper->encoderDelayFrames(), qPrintable(QString::number(after)));
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

    void endOfAudioOnlyIsReachedByTheAudio()
    {
        setup(5);
        QCOMPARE(m_wrapper->startRecording(), 0);
        QCOMPARE(m_wrapper->encoderDelayFrames(), 0);
        m_wrapper->requestRecordingEnd();
        QVERIFY(!m_wrapper->isRecordingEndReached());
        QTRY_VERIFY(m_wrapper->isRecordingEndReached());
        QCOMPARE(m_wrapper->stopRecording(false), 0);
    }

private:
    /// Longer than an output rests.
    static constexpr std::uint64_t kLongAgoNs = 15'000'000'000;
    /// More than an encoder that buffers little, and the audio, need after the requested end.
    static constexpr int kFramesOfAnEnd = 10;

    /// What an output does inside its start that opens its file on a thread of its own.
    static void keepOpening(obs_output_t*) {}

    /// Waits until the engine has rendered so many more, whether or not anybody takes them.
    static bool waitForRenderedFrames(uint32_t count)
    {
        return QTest::qWaitFor([wanted = obs_get_total_frames() + count] { return obs_get_total_frames() >= wanted; },
                               20'000);
    }

    /// Waits until libobs has ended the output, and whatever status comes with that has arrived.
    static bool waitForWholeEnd(obs_output_t* output)
    {
        const bool ended = QTest::qWaitFor([output] { return !obs_output_active(output); }, 20'000);
        QCoreApplication::processEvents();
        return ended;
    }

    static ObsOutputHandle idleOutput()
    {
        return ObsOutputHandle(obs_output_create("ffmpeg_output", "adv_ffmpeg_output", nullptr, nullptr));
    }

    /// An output of the tests' own.
    static ObsOutputHandle startedOutput(video_t* video = obs_get_video())
    {
        ObsOutputHandle output = idleOutput();
        obs_output_set_media(output.get(), video, obs_get_audio());
        if (!obs_output_start(output.get()))
            output.reset();
        return output;
    }
};

REGISTER_TEST(testrun::gui<TestEngineStop>);

#include "test_enginestop.moc"
