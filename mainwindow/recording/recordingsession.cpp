// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingsession.h"

#include "app/savefolder.h"
#include "app/sclogger.h"
#include "app/settings.h"
#include "engine/output/recordingformat.h"
#include "engine/ports.h"
#include "mainwindow/recording/recordingpath.h"

#include <QSignalBlocker>
#include <QThread>

namespace {

constexpr int kCountdownFrom = 3;
constexpr int kVideoBitRate = 4;

using Kind = RecordingOutcome::Kind;

} // namespace

RecordingSession::RecordingSession(RecorderPort& recorder, RecordingStage& stage, QObject* parent,
                                   const Durations& durations)
    : QObject(parent)
    , m_recorder(recorder)
    , m_stage(stage)
    , m_durations(durations)
    , m_clock(nullptr, durations.clockTickMs)
{
    connect(&m_clock, &RecordingClock::tick, this, &RecordingSession::onTick);
    m_drainTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_drainTimer, &QTimer::timeout, this, &RecordingSession::pollDrain);
    m_resumeTimer.setSingleShot(true);
    connect(&m_resumeTimer, &QTimer::timeout, this, [this] { applyPause(false); });
    m_confirmTimer.setSingleShot(true);
    connect(&m_confirmTimer, &QTimer::timeout, this, &RecordingSession::onConfirmTimeout);
}

void RecordingSession::toggle()
{
    switch (m_state) {
    case RecordingState::Idle:
        requestStart();
        break;
    case RecordingState::Countdown:
        cancelCountdown();
        break;
    case RecordingState::Recording:
    case RecordingState::Paused:
        requestStop();
        break;
    case RecordingState::Preparing:
    case RecordingState::Stopping:
    case RecordingState::Ended:
        SCLogger::debug(QStringLiteral("Recording request ignored: the last one is still being carried out"));
        break;
    }
}

void RecordingSession::requestStart()
{
    if (m_state != RecordingState::Idle)
        return;
    m_outcome = {};
    setState(RecordingState::Countdown);
    m_stage.minimiseWindow();
    m_stage.countDown(kCountdownFrom);
    if (m_countdownCancelled) {
        m_countdownCancelled = false;
        SCLogger::info(QStringLiteral("Countdown cancelled, nothing is recorded"));
        conclude();
    } else if (!m_recorder.isReady()) {
        SCLogger::warning(QStringLiteral("OBS wrapper not initialized"));
        noteFailure(Kind::NotStarted, StopCause::Unknown);
        conclude();
    } else if (m_recorder.isRecording()) {
        SCLogger::info(QStringLiteral("Stopping existing recording"));
        beginStop();
    } else if (prepare()) {
        startOutput();
    } else {
        SCLogger::error(QStringLiteral("Failed to prepare recording"));
        noteFailure(Kind::NotPrepared, StopCause::Unknown);
        conclude();
    }
}

bool RecordingSession::prepare()
{
    setState(RecordingState::Preparing);
    return m_stage.prepareCapture();
}

void RecordingSession::startOutput()
{
    const RecordingChoices choices = m_stage.choices();
    m_recorder.setCaptureCursor(choices.showCursor);
    m_recorder.setCursorEffects(choices.pointerEffects);
    m_stage.setExcludedFromCapture(true);
    showElapsed(QTime(0, 0, 0));
    m_clock.setRunning(true);

    const RecordingPath path = choosePath(choices);
    SCLogger::info(QStringLiteral("Starting recording to file: %1").arg(path.withoutExtension()));
    SCLogger::debug(
        QStringLiteral("Recording area set to: %1x%2").arg(choices.areaSize.width()).arg(choices.areaSize.height()));
    const RecordingFormat format = recordingFormatFromIndex(choices.formatIndex);
    m_outcome.path = path.full();
    emit starting(path.full(),
                  nominalBytesPerSecond(format, {choices.widthPx, choices.heightPx}, kFramesPerSecond, kVideoBitRate));
    m_recorder.setupFFmpeg(path.withoutExtension(), choices.widthPx, choices.heightPx, kFramesPerSecond, kVideoBitRate,
                           static_cast<int>(format));
    m_stopRequested = false;
    m_starting = true;
    m_recorder.startRecording();
    m_starting = false;
    SCLogger::info(QStringLiteral("Recording started..."));
    emit fileProduced(path.full(), hasVideo(format) ? QStringLiteral("video") : QStringLiteral("audio"));
}

RecordingPath RecordingSession::choosePath(const RecordingChoices& choices)
{
    const SaveFolder folder = usableSaveFolder(choices.folder, settingskeys::kRecordingSaveLocation);
    if (folder.isReplaced)
        emit folderReplaced();
    return {folder.path, choices.fileName, recordingFormatFromIndex(choices.formatIndex), choices.now};
}

bool RecordingSession::isUnderWay() const
{
    return m_state == RecordingState::Recording || m_state == RecordingState::Paused;
}

void RecordingSession::requestStop()
{
    if (isUnderWay() && m_recorder.isRecording())
        beginStop();
}

void RecordingSession::setPaused(bool paused)
{
    if (paused || m_stage.isWindowMinimised()) {
        applyPause(paused);
    } else if (m_state == RecordingState::Paused) {
        // Whoever restored the window during the pause does not want it in the video.
        m_stage.minimiseWindow();
        m_resumeTimer.start(m_durations.windowGoneMs);
    }
}

void RecordingSession::applyPause(bool paused)
{
    m_resumeTimer.stop();
    if (m_state != (paused ? RecordingState::Recording : RecordingState::Paused) || !m_recorder.isRecording())
        return;
    if (!m_recorder.pauseRecording(paused)) {
        SCLogger::warning(QStringLiteral("The recording cannot be %1").arg(paused ? "paused" : "resumed"));
        return;
    }
    SCLogger::info(paused ? QStringLiteral("Recording paused") : QStringLiteral("Recording resumed"));
    m_clock.setPaused(paused);
    onRecordStatusChanged(paused ? recordstatus::kPaused : recordstatus::kStarted);
}

void RecordingSession::beginStop()
{
    setState(RecordingState::Stopping);
    m_recorder.requestRecordingEnd();
    m_sinceStopRequest.start();
    m_drainTimer.start(m_durations.drainPollMs);
}

void RecordingSession::pollDrain()
{
    if (!m_recorder.isRecording()) {
        // It ended by itself, and its status is queued.
        m_drainTimer.stop();
        m_confirmTimer.start(m_durations.confirmTimeoutMs);
        return;
    }
    const bool reached = m_recorder.isRecordingEndReached();
    if (!reached && !m_sinceStopRequest.hasExpired(m_durations.drainTimeoutMs))
        return;
    if (!reached)
        SCLogger::warning(QStringLiteral("The recorder stalls, the recording ends without its last frames"));
    m_drainTimer.stop();
    stopOutput();
}

void RecordingSession::stopOutput()
{
    // Armed first: the engine may report the end before its stop returns.
    m_confirmTimer.start(m_durations.confirmTimeoutMs);
    m_stopRequested = true;
    const int result = m_recorder.stopRecording(false);
    SCLogger::info(QStringLiteral("Recording stopped... %1").arg(result));
}

void RecordingSession::onConfirmTimeout()
{
    SCLogger::error(QStringLiteral("The engine did not report the end of the recording within %1 seconds")
                        .arg(m_durations.confirmTimeoutMs / 1000));
    noteFailure(Kind::EndMissing, StopCause::Unknown);
    conclude();
}

void RecordingSession::endForLackOfSpace()
{
    endBecause(Kind::Shortened, QStringLiteral("the disk is nearly full"));
}

void RecordingSession::endWithoutFolder()
{
    endBecause(Kind::FolderGone, QStringLiteral("its file is no longer in its folder"));
}

void RecordingSession::endBecause(RecordingOutcome::Kind kind, const QString& reason)
{
    if (!isUnderWay() || !m_recorder.isRecording())
        return;
    SCLogger::warning(QStringLiteral("The recording is ended: %1").arg(reason));
    m_outcome.kind = kind;
    beginStop();
}

void RecordingSession::cancelCountdown()
{
    if (m_state != RecordingState::Countdown)
        return;
    m_countdownCancelled = true;
    m_stage.cancelCountdown();
}

void RecordingSession::requestEnd()
{
    cancelCountdown();
    requestStop();
}

void RecordingSession::finishAtOnce()
{
    requestEnd();
    if (m_state != RecordingState::Stopping || !m_recorder.isRecording())
        return;
    SCLogger::info(QStringLiteral("The session ends, the recording is finished first"));
    // Events have to wait as well: one of them could be the stop that is about to be carried out here.
    while (!m_recorder.isRecordingEndReached() && !m_sinceStopRequest.hasExpired(m_durations.sessionEndDrainTimeoutMs))
        QThread::msleep(static_cast<unsigned long>(m_durations.drainPollMs));
    m_drainTimer.stop();
    stopOutput();
}

void RecordingSession::finishWithoutStage()
{
    if (!isUnderWay() && m_state != RecordingState::Stopping)
        return;
    m_isStageGone = true;
    const QSignalBlocker silence(this);
    finishAtOnce();
}

void RecordingSession::onRecordStatusChanged(int status)
{
    if (m_isStageGone)
        return;
    if (status == recordstatus::kStarted) {
        setState(RecordingState::Recording);
        emit statusChanged(recordstatus::kStarted);
    } else if (status == recordstatus::kPaused) {
        setState(RecordingState::Paused);
        emit statusChanged(recordstatus::kPaused);
        m_stage.minimiseWindow();
    } else if (isUnderWay() || m_state == RecordingState::Stopping) {
        noteEndReason();
        conclude();
    }
}

void RecordingSession::noteEndReason()
{
    const QString reason = m_recorder.stopReasonText();
    if (m_stopRequested && reason.isEmpty())
        return;
    const QString text = m_starting        ? QStringLiteral("The recording could not start: %1")
                         : m_stopRequested ? QStringLiteral("The recording's end could not be written: %1")
                                           : QStringLiteral("The recording ended by itself: %1");
    SCLogger::error(text.arg(reason.isEmpty() ? QStringLiteral("the engine gave no reason") : reason));
    const StopCause cause = m_recorder.stopCause();
    noteFailure(m_starting        ? Kind::NotStarted
                : m_stopRequested ? Kind::EndMissing
                                  : Kind::EndedByItself,
                cause == StopCause::AsAsked ? StopCause::Unknown : cause);
}

/// The first one counts, and a folder that has gone explains what came after.
void RecordingSession::noteFailure(RecordingOutcome::Kind kind, StopCause cause)
{
    if (m_outcome.kind != Kind::Complete && m_outcome.kind != Kind::Shortened)
        return;
    m_outcome.kind = kind;
    m_outcome.cause = cause;
}

void RecordingSession::conclude()
{
    const bool wasShown = isUnderWay() || m_state == RecordingState::Stopping;
    m_resumeTimer.stop();
    m_drainTimer.stop();
    m_confirmTimer.stop();
    setState(RecordingState::Ended);
    emit statusChanged(recordstatus::kEnded);
    m_clock.setRunning(false);
    m_stage.setExcludedFromCapture(false);
    // A countdown that was cancelled leaves the region's frame where it is.
    if (wasShown)
        m_stage.hideOverlays();
    showElapsed(QTime(0, 0, 0));
    m_stage.restoreWindow();
    emit ended(m_outcome);
    QTimer::singleShot(0, this, [this] { setState(RecordingState::Idle); });
}

void RecordingSession::onTick()
{
    // The clock stops with the request to stop.
    if (m_state == RecordingState::Recording)
        showElapsed(m_elapsed.addSecs(1));
}

void RecordingSession::showElapsed(const QTime& elapsed)
{
    m_elapsed = elapsed;
    emit elapsedChanged(elapsed.toString(QStringLiteral("hh:mm:ss")));
}

void RecordingSession::setState(RecordingState state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}
