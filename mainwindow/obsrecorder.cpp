#include "mainwindow/obsrecorder.h"

#include "engine/obswrapper.h"
#include "engine/recordingend.h"

ObsRecorder::ObsRecorder(ObsWrapper& obs) : m_obs(obs) {}

bool ObsRecorder::isRecording() const
{
    return m_obs.isRecording();
}

void ObsRecorder::setCaptureCursor(bool show)
{
    m_obs.setCaptureCursor(show);
}

void ObsRecorder::setCursorEffects(bool show)
{
    m_obs.setCursorEffects(show);
}

void ObsRecorder::setupFFmpeg(const QString& storePath, int widthPx, int heightPx, int fps, int bitRate, int format)
{
    m_obs.setupFFmpeg(storePath, widthPx, heightPx, fps, bitRate, format);
}

int ObsRecorder::startRecording()
{
    return m_obs.startRecording();
}

int ObsRecorder::stopRecording(bool force)
{
    return m_obs.stopRecording(force);
}

bool ObsRecorder::pauseRecording(bool pause)
{
    return m_obs.pauseRecording(pause);
}

bool ObsRecorder::isRecordingPaused() const
{
    return m_obs.isRecordingPaused();
}

bool ObsRecorder::canPauseRecording() const
{
    return m_obs.canPauseRecording();
}

void ObsRecorder::requestRecordingEnd()
{
    m_obs.requestRecordingEnd();
}

bool ObsRecorder::isRecordingEndReached() const
{
    return m_obs.isRecordingEndReached();
}

QString ObsRecorder::endReason() const
{
    const RecordingEnd end = m_obs.endReason();
    return end.code == 0 && end.text.isEmpty() ? QString() : describe(end);
}
