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

    /// Pauses the running recording, or lets it go on. What happens meanwhile is not in the file. No status number
    /// tells of it.
    ///
    /// @return false, and nothing changed, when that is not possible, for instance in the first tenths of a second
    virtual bool pauseRecording(bool pause) = 0;
    virtual bool isRecordingPaused() const = 0;
    /// Whether a recording of the format that is set up can pause.
    virtual bool canPauseRecording() const = 0;

    /// Takes the present moment as the end that the running recording shall have; a paused one ends where its pause
    /// began, and is no longer paused.
    virtual void requestRecordingEnd() = 0;

    /// Whether everything captured up to the requested end has left the encoder, so that a stop loses nothing of it. An
    /// engine that stalls never gets there.
    virtual bool isRecordingEndReached() const = 0;

    /// Why the last recording did not start or did not end well, in plain words; empty when the engine knows of
    /// nothing.
    virtual QString endReason() const = 0;
};
