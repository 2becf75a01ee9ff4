#pragma once

#include "mainwindow/recorderport.h"

class ObsWrapper;

/// The engine as a recording session sees it. Does not own the wrapper, which must outlive it.
class ObsRecorder : public RecorderPort
{
public:
    explicit ObsRecorder(ObsWrapper& obs);

    /// Says that the engine runs, or that it does not.
    void setReady(bool ready) { m_ready = ready; }

    bool isReady() const override { return m_ready; }
    bool isRecording() const override;
    void setCaptureCursor(bool show) override;
    void setCursorEffects(bool show) override;
    void setupFFmpeg(const QString& storePath, int widthPx, int heightPx, int fps, int bitRate, int format) override;
    int startRecording() override;
    int stopRecording(bool force) override;
    bool pauseRecording(bool pause) override;
    bool isRecordingPaused() const override;
    bool canPauseRecording() const override;
    void requestRecordingEnd() override;
    bool isRecordingEndReached() const override;
    QString endReason() const override;

private:
    ObsWrapper& m_obs;
    bool m_ready = false;
};
