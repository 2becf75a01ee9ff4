// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/recording/recordingclock.h"
#include "mainwindow/recording/recordingoutcome.h"
#include "mainwindow/recording/recordingstage.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTime>
#include <QTimer>

class RecorderPort;
class RecordingPath;

/// Ended is the moment between the engine's last report and Idle.
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

/// The sequence of a recording: countdown, preparation, file name, start, elapsed time, stop. However it ends, the
/// session returns to Idle: status 2 is reported, the window restored, the clock at zero, the reason logged.
/// Knows no window and no engine, only RecordingStage and RecorderPort, which must outlive it. User-interface thread.
class RecordingSession : public QObject
{
    Q_OBJECT

public:
    static constexpr int kFramesPerSecond = 30;

    RecordingSession(RecorderPort& recorder, RecordingStage& stage, QObject* parent, const Durations& durations = {});

    RecordingState state() const { return m_state; }

public slots:
    /// Starts, cancels a countdown, or stops. Ignored during preparation and stop.
    void toggle();

    /// Returns after the countdown and the start. Ignored unless idle.
    void requestStart();
    /// Stops once the last frames have left the encoder.
    void requestStop();
    /// statusChanged() follows. Logged and ignored where the engine cannot.
    void setPaused(bool paused);

    void requestEnd();
    void cancelCountdown();

    /// Stop as requestStop() does, for these reasons.
    void endForLackOfSpace();
    void endWithoutFolder();

    /// For the end of the user's session: the file is closed when this returns.
    void finishAtOnce();

    /// The same when nothing can be shown any more: the stage is not asked again, and no signal follows.
    void finishWithoutStage();

    /// A number of recordstatus.
    void onRecordStatusChanged(int status);
    void onTick();

signals:
    void stateChanged(RecordingState state);
    /// A number of recordstatus.
    void statusChanged(int status);
    /// As "hh:mm:ss".
    void elapsedChanged(const QString& text);
    /// The chosen folder cannot be used, and the default one is (usableSaveFolder()).
    void folderReplaced();
    /// Before the file is made. It will grow by about so much.
    void starting(const QString& path, qint64 bytesPerSecond);
    /// At the start of the file. type is "video" or "audio".
    void fileProduced(const QString& path, const QString& type);
    /// After status 2.
    void ended(const RecordingOutcome& outcome);

private:
    void setState(RecordingState state);
    bool isUnderWay() const;
    void applyPause(bool paused);
    bool prepare();
    void startOutput();
    RecordingPath choosePath(const RecordingChoices& choices);
    void beginStop();
    void pollDrain();
    void stopOutput();
    void onConfirmTimeout();
    void endBecause(RecordingOutcome::Kind kind, const QString& reason);
    void noteEndReason();
    void noteFailure(RecordingOutcome::Kind kind, StopCause cause);
    void conclude();
    void showElapsed(const QTime& elapsed);

    RecorderPort& m_recorder;
    RecordingStage& m_stage;
    Durations m_durations;
    RecordingState m_state = RecordingState::Idle;
    bool m_countdownCancelled = false;
    bool m_starting = false;
    bool m_stopRequested = false;
    /// So far; of the last recording while idle.
    RecordingOutcome m_outcome;
    bool m_isStageGone = false;
    RecordingClock m_clock;
    QTime m_elapsed{0, 0, 0};

    /// While a window is being minimised before a resume.
    QTimer m_resumeTimer;
    QTimer m_drainTimer;
    QTimer m_confirmTimer;
    QElapsedTimer m_sinceStopRequest;
};
