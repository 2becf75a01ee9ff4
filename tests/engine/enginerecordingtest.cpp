#include "tests/engine/enginerecordingtest.h"

#include "tests/engine/obsspy.h"
#include "tests/engine/standins.h"

#include <QTest>

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
    m_wrapper = std::make_unique<ObsWrapper>(standins::platform());
    m_status = std::make_unique<QSignalSpy>(m_wrapper.get(), &ObsWrapper::recordStatusChanged);
    standins::clearEvents();
    obsspy::clear();
}

void EngineRecordingTest::cleanup()
{
    m_status.reset();
    m_wrapper.reset();
    obsspy::failNowhere();
    obsspy::delaySecondStopConnection(0);
    QTRY_VERIFY(!obs_video_active());
    // An output whose end is under way is ended a second time by its release, and the ends run on without it.
    QCOMPARE(obsspy::outputsReleasedWhileActive(), 0);
}
