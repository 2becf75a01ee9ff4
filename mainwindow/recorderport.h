#pragma once

#include <QString>

/// What a recording session needs of the engine. The session is tested against a stand-in that notes what it was asked;
/// in the program it is ObsRecorder.
///
/// Called on the user-interface thread. How a recording begins and ends is reported beside this interface, by the
/// status numbers that go to RecordingSession::onRecordStatusChanged().
class RecorderPort
{
public:
    virtual ~RecorderPort() = default;

    /// Whether the engine runs; nothing else may be called while it does not.
    virtual bool isReady() const = 0;
    virtual bool isRecording() const = 0;

    virtual void setCaptureCursor(bool show) = 0;
    virtual void setCursorEffects(bool show) = 0;

    /// Prepares the output for one recording. The path has no extension; sizes are physical pixels; bitRate is in units
    /// of 1024 of the encoder's own.
    virtual void setupFFmpeg(const QString& storePath, int widthPx, int heightPx, int fps, int bitRate, int format) = 0;

    /// @return 0 when the output was started, a negative code when it was not.
    virtual int startRecording() = 0;
    virtual int stopRecording(bool force) = 0;

    /// Frames handed to the running output so far.
    virtual qint64 recordedFrames() const = 0;

    /// How many frames must still be handed over before the newest one captured by now has left the encoder.
    virtual int encoderDelayFrames() const = 0;

    /// Why the last recording did not start or ended by itself, in plain words; empty when the engine gave no reason.
    virtual QString lastError() const = 0;
};
