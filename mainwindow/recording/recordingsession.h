#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/recording/recordingstage.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTime>
#include <QTimer>

class RecorderPort;
class RecordingPath;

/// Where a recording stands. Ended is passed in the moment between the engine's last word and Idle.
enum class RecordingState
{
    Idle,
    Countdown,
    Preparing,
    Recording,
    Paused,
    Stopping,
    Ended
};

/// The road of a recording: countdown, preparation, the file's name, start, elapsed time, stop, and back.
///
/// Knows no window and no engine, only RecordingStage and RecorderPort, both of which must outlive it. Runs on the
/// user-interface thread. Whatever happens on the road, and wherever it breaks off, it leads back to Idle: the status
/// number 2 is given out, the window restored, the clock at zero, the reason in the log.
class RecordingSession : public QObject
{
    Q_OBJECT

public:
    /// Pictures per second of every recording.
    static constexpr int kFramesPerSecond = 30;

    RecordingSession(RecorderPort& recorder, RecordingStage& stage, QObject* parent, const Durations& durations = {});
    ~RecordingSession() override;

    RecordingState state() const { return m_state; }

public slots:
    /// The record button and the hotkey: starts, cancels a running countdown, or stops, also while paused. Ignored
    /// while the capture is being prepared, the recording is being stopped or has just ended.
    void toggle();

    /// Starts a recording; returns after the countdown and the start. Ignored unless idle.
    void requestStart();

    /// Stops the recording once its last frames have left the encoder. Ignored while there is none or it is already
    /// being stopped.
    void requestStop();

    /// Pauses a running recording, or resumes a paused one; statusChanged() says so when it is done. Ignored otherwise
    /// and, with a line in the log, where the engine cannot. The paused time is not in the file.
    void setPaused(bool paused);

    /// The frame's and the floating bar's stop: takes back a start that is counted down, or stops.
    void requestEnd();

    /// Takes back a start while it is counted down. Ignored otherwise.
    void cancelCountdown();

    /// Brings what runs to its end, for a program that is about to exit; stateChanged(Idle) says when.
    void finish() { requestEnd(); }

    /// The same for a user's session that ends: the file is closed when this returns, since the process may be ended at
    /// any moment from then on. The events that lead back to idle follow where there is still time for them.
    void finishAtOnce();

    /// The engine's numbers, see recordstatus.
    void onRecordStatusChanged(int status);

    /// One second has passed on the recording clock.
    void onTick();

signals:
    void stateChanged(RecordingState state);

    /// For everything that mirrors the recording: a number of recordstatus.
    void statusChanged(int status);

    /// The recorded time as "hh:mm:ss".
    void elapsedChanged(const QString& text);

    /// A file has been begun. type is "video" or "audio".
    void fileProduced(const QString& path, const QString& type);

private:
    void setState(RecordingState state);
    bool isUnderWay() const;
    void applyPause(bool paused);
    bool prepare();
    void startOutput();
    RecordingPath choosePath(const RecordingChoices& choices) const;
    void beginStop();
    void pollDrain();
    void waitForDrain() const;
    void stopOutput();
    void giveUpWaiting();
    void logEndReason() const;
    void conclude();
    void becomeIdle();
    void showElapsed(const QTime& elapsed);

    RecorderPort& m_recorder;
    RecordingStage& m_stage;
    Durations m_durations;
    RecordingState m_state = RecordingState::Idle;
    bool m_countdownCancelled = false;
    bool m_starting = false;
    /// Whether the engine was told to stop the present recording.
    bool m_stopAsked = false;
    QTime m_elapsed{0, 0, 0};

    /// Runs while a window that was in front of the picture goes away before a resume.
    QTimer m_resumeTimer;
    QTimer m_drainTimer;
    QTimer m_confirmTimer;
    QElapsedTimer m_sinceStopRequest;
};
