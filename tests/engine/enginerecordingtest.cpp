// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/enginerecordingtest.h"

#include "engine/core/rawvideo.h"
#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"

#include <QTest>

PassingFrames::PassingFrames(video_t* video) : m_video(video)
{
    connectRawVideo(m_video, &PassingFrames::onFrame, &m_passed);
}

PassingFrames::~PassingFrames()
{
    disconnectRawVideo(m_video, &PassingFrames::onFrame, &m_passed);
}

bool PassingFrames::waitFor(int count) const
{
    constexpr int kTimeoutMs = 20'000;
    return QTest::qWaitFor([this, wanted = m_passed + count] { return m_passed >= wanted; }, kTimeoutMs);
}

void PassingFrames::onFrame(void* passed, video_data*)
{
    ++*static_cast<std::atomic<int>*>(passed);
}

EngineTimings EngineRecordingTest::quickTimings()
{
    EngineTimings timings;
    // No stand-in closes a file after its end.
    timings.release.shortestDelay = std::chrono::milliseconds(1);
    return timings;
}

void EngineRecordingTest::make(const EngineTimings& timings)
{
    m_status.reset();
    m_wrapper = std::make_unique<ObsWrapper>(standins::platform(), timings);
    m_status = std::make_unique<QSignalSpy>(m_wrapper.get(), &ObsWrapper::recordStatusChanged);
}

void EngineRecordingTest::setup(int format)
{
    m_wrapper->setupFFmpeg(QStringLiteral("/r"), 320, 240, 30, 4, format);
}

void EngineRecordingTest::signalStop(obs_output_t* output, int code)
{
    obs_output_signal_stop(output, code);
}

QList<int> EngineRecordingTest::statuses(const QSignalSpy& spy)
{
    QList<int> result;
    for (const QList<QVariant>& arguments : spy)
        result << arguments.first().toInt();
    return result;
}

void EngineRecordingTest::init()
{
    standins::behaviour() = standins::Behaviour();
    make(quickTimings());
    standins::clearEvents();
    obsspy::clear();
}

void EngineRecordingTest::cleanup()
{
    m_status.reset();
    m_wrapper.reset();
    obsspy::failNowhere();
    obsspy::aroundSecondStopConnection({}, {});
    QTRY_VERIFY(!obs_video_active());
    // An output whose end is under way is ended a second time by its release, and the ends run on without it.
    QCOMPARE(obsspy::outputsReleasedWhileActive(), 0);
}
