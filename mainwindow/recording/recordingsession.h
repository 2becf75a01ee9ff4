// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/recording/recordingclock.h"
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

/// The sequence of a recording: countdown, preparation, file name, start, elapsed time, stop. User-interface thread.
///
/// Knows no window and no engine, only RecordingStage and RecorderPort, both of which must outlive it. However a
/// recording ends or fails, the session returns to Idle: status 2 is reported, the window restored, the clock at zero,
/// the reason in the log.
class RecordingSession : public QObject
{
    Q_OBJECT

public:
    static constexpr int kFramesPerSecond = 30;

    RecordingSession(RecorderPort& recorder, RecordingStage& stage, QObject* parent, const Durations& durations = {});
    ~RecordingSession() override;

    RecordingState state() const { return m_state; }

public slots:
    /// Starts, cancels a running countdown, or stops, also while paused. Ignored while the capture is being prepared,
    /// the recording is being stopped or has just ended.
    void toggle();

    /// Returns after the countdown and the start. Ignored unless idle.
    void requestStart();
    /// Stops the recording once its last frames have left the encoder.
    void requestStop();
    /// statusChanged() follows. Ignored, with a line in the log, where the engine cannot.
    void setPaused(bool paused);

    /// Cancels a countdown, or stops.
    void requestEnd();
    void cancelCountdown();

    /// Ends the recording of a user's session that ends: the file is closed when this returns, since the process may be
    /// ended at any moment from then on.
    void finishAtOnce();

    /// A number of recordstatus.
    void onRecordStatusChanged(int status);
    void onTick();

signals:
    void stateChanged(RecordingState state);
    /// A number of recordstatus.
    void statusChanged(int status);
    /// The recorded time as "hh:mm:ss".
    void elapsedChanged(const QString& text);
    /// When the file is started. type is "video" or "audio".
    void fileProduced(const QString& path, const QString& type);

private:
    void setState(RecordingState state);
    bool isUnderWay() const;
    void applyPause(bool paused);
    bool prepare();
    void startOutput();
    static RecordingPath choosePath(const RecordingChoices& choices);
    void beginStop();
    void pollDrain();
    void waitForDrain() const;
    void stopOutput();
    void onConfirmTimeout();
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
    bool m_stopRequested = false;
    RecordingClock m_clock;
    QTime m_elapsed{0, 0, 0};

    /// Runs while a window is being minimised before a resume.
    QTimer m_resumeTimer;
    QTimer m_drainTimer;
    QTimer m_confirmTimer;
    QElapsedTimer m_sinceStopRequest;
};
