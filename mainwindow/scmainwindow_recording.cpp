// The main window as the stage of a recording: button, floating bar, frame, countdown and clock.

#include "app/sclogger.h"
#include "app/settings.h"
#include "engine/obswrapper.h"
#include "engine/recordingformat.h"
#include "mainwindow/capture/primaryscreen.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/filepage.h"
#include "mainwindow/recording/recordingclock.h"
#include "mainwindow/recording/recordstatus.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/recording/toolbarplacement.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/screenshotsession.h"
#include "platform/windowing/capture_exclusion.h"
#include "platform/windowing/window_hold.h"
#include "ui_scmainwindow.h"
#include "widgets/icons.h"

#include <QSettings>

#include <array>

namespace {

// The engine's numbers and the window's are the same.
static_assert(ObsWrapper::kStatusStarting == recordstatus::kStarted &&
              ObsWrapper::kStatusEnded == recordstatus::kEnded);

} // namespace

void SCMainWindow::onStateChanged(RecordingState state)
{
    const bool idle = state == RecordingState::Idle;
    // What is captured is chosen before a recording, not during one.
    for (QWidget* const part : std::initializer_list<QWidget*>{m_ui->sizeCard, m_ui->screenSwitch, m_ui->formatBox})
        part->setEnabled(idle);
    for (Tile* const tile : findChildren<Tile*>())
        tile->setEnabled(idle);
    if (!idle)
        return;
    m_obs->setSceneRendered(false);
    if (m_frameGivenUp) {
        m_frameGivenUp = false;
        chooseFullScreen();
    }
    m_filePage->onRecordingOver();
    if (m_activity.isClosing())
        close();
}

void SCMainWindow::showRecordStatus(int status)
{
    setRecordingActive(status == recordstatus::kStarted);
    showRecordButton(status);
    if (status == recordstatus::kStarted)
        showOverlays();
    else if (status == recordstatus::kPaused)
        toolbar().setPaused(true);
    // A start that came to nothing was the frame's own, perhaps.
    m_region->setRecording(status != recordstatus::kEnded);
}

void SCMainWindow::showRecordButton(int status)
{
    struct Look
    {
        const char* icon;
        const char* label;
    };
    static constexpr std::array<Look, 3> kLooks{{{"stop-recording", QT_TR_NOOP("Stop Recording")},
                                                 {"pause-recording", QT_TR_NOOP("Pause Recording")},
                                                 {"start-recording", QT_TR_NOOP("Start Recording")}}};
    m_shownStatus = status;
    const Look& look = kLooks.at(static_cast<std::size_t>(status));
    m_ui->recordButton->setIcon(icons::named(QLatin1String(look.icon)));
    m_ui->recordButton->setText(tr(look.label));
    // The button of a paused recording stops it.
    m_ui->recordButton->setToolTip(status == recordstatus::kPaused ? tr("Stop Recording") : QString());
}

void SCMainWindow::setRecordingActive(bool active)
{
    m_recordingActive = active;
    platform::setHeld(*this, active);
}

void SCMainWindow::minimiseWhileRecording()
{
    if (m_recordingActive)
        showMinimized();
}

SCFullscreenToolbar& SCMainWindow::toolbar()
{
    if (m_toolbar == nullptr) {
        m_toolbar = std::make_unique<SCFullscreenToolbar>(nullptr, m_durations);
        connect(m_toolbar.get(), &SCFullscreenToolbar::recordingToggled, this, &SCMainWindow::onBarToggled);
        connect(m_toolbar.get(), &SCFullscreenToolbar::pauseToggled, &m_session, &RecordingSession::setPaused);
    }
    return *m_toolbar;
}

void SCMainWindow::onBarToggled(bool record)
{
    if (record)
        onRecordRequested();
    else
        m_session.requestEnd();
}

/// The button's, the hotkey's and the frame's wish.
void SCMainWindow::onRecordRequested()
{
    // It would be recorded, and whatever it decides would change the recording under way.
    if (!m_activity.mayToggleRecording()) {
        SCLogger::info(QStringLiteral("Recording request ignored: a dialog is open"));
        m_region->setRecording(false);
        return;
    }
    m_session.toggle();
}

bool SCMainWindow::recordsPicture() const
{
    return hasVideo(recordingFormatFromIndex(m_ui->formatBox->currentIndex()));
}

/// Where it is not in the picture, as far as there is such a place.
void SCMainWindow::placeBar()
{
    if (m_toolbar == nullptr)
        return;
    const CaptureScreen screen = primaryScreen();
    const QRect recorded = recordsPicture() ? m_captureArea.rectOn(screen) : QRect();
    const ToolbarPlacement placement = placeToolbar(screen.geometry, m_toolbar->size(), recorded, m_barExcluded);
    m_toolbar->move(placement.topLeft);
    m_toolbar->setTopEdgeOnly(placement.topEdgeOnly);
    m_toolbar->setPicture(recorded);
}

void SCMainWindow::showOverlays()
{
    const bool region = m_captureArea.mode() == CaptureMode::Region && m_screenOn && !m_captureArea.isUnset();
    if (region && !m_frameGivenUp && !m_region->isFrameShown())
        m_region->showFrame();
    SCFullscreenToolbar& bar = toolbar();
    bar.setRecording(true);
    bar.setPaused(false);
    bar.setPausable(m_recorder.canPauseRecording());
    bar.setAudioOnly(!recordsPicture());
    placeBar();
    bar.show();
}

void SCMainWindow::hideOverlays()
{
    if (m_toolbar != nullptr) {
        m_toolbar->setRecording(false);
        m_toolbar->setPaused(false);
        m_toolbar->hide();
    }
    m_region->hideFrame();
}

void SCMainWindow::showElapsed(const QString& text)
{
    toolbar().setTimeText(text);
    m_region->setTimeText(text);
}

void SCMainWindow::minimiseWindow()
{
    showMinimized();
}

bool SCMainWindow::isWindowMinimised() const
{
    return isMinimized() || !isVisible();
}

void SCMainWindow::restoreWindow()
{
    if (m_activity.isClosing())
        return;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void SCMainWindow::countDown(int from)
{
    // What was still being picked would lie over the picture.
    m_screenshots->cancel();
    m_screenshots->cancelSelections();
    bringAreaUpToDate();
    m_countdown = new SCCountdownWidget(nullptr, m_durations.countdownStepMs);
    const QPoint centre = captureCentre(m_captureArea.rectOn(primaryScreen()));
    m_countdown->move(centre - QPoint(m_countdown->width() / 2, m_countdown->height() / 2));
    connect(m_countdown, &SCCountdownWidget::closed, &m_session, &RecordingSession::cancelCountdown);
    m_countdown->start(from);
    m_countdown->exec();
    // Still counting: the program is about to quit, which is no reason to begin a recording.
    if (m_countdown->isCounting())
        m_session.cancelCountdown();
    m_countdown->deleteLater();
    m_countdown.clear();
}

void SCMainWindow::cancelCountdown()
{
    m_countdown->cancel();
    m_countdown->hide();
}

bool SCMainWindow::prepareCapture()
{
    const bool picture = recordsPicture();
    m_obs->setSceneRendered(picture);
    // Screens come and go between recordings.
    m_obs->refreshCaptureTargets(false);
    // An area that is applied anew takes its target along.
    const bool applied = areaFollowsScreen();
    if (!resetRecordingArea())
        return false;
    if (!applied)
        setCaptureTarget();
    // Sound needs no screen.
    return m_targetFound || !picture;
}

RecordingChoices SCMainWindow::choices() const
{
    RecordingChoices choices;
    choices.fileName = m_ui->fileNameEdit->text();
    choices.folder = m_ui->saveLocationEdit->text();
    choices.formatIndex = m_ui->formatBox->currentIndex();
    choices.areaSize = m_captureArea.rectOn(primaryScreen()).size();
    choices.widthPx = m_ui->widthEdit->text().toInt();
    choices.heightPx = m_ui->heightEdit->text().toInt();
    choices.showCursor = m_settings->value(settingskeys::kMouseShowCursor).toBool();
    choices.pointerEffects = m_settings->value(settingskeys::kMouseSwitch).toBool();
    return choices;
}

void SCMainWindow::setExcludedFromCapture(bool excluded)
{
    // Where the system cannot, the window stays out of the picture because it is minimised, and the bar because of
    // where it stands. It may well do the one and refuse the other.
    platform::setExcludedFromCapture(*this, excluded);
    m_barExcluded = platform::setExcludedFromCapture(toolbar(), excluded);
}

void SCMainWindow::setClockRunning(bool running)
{
    m_recordingClock->setRunning(running);
}

void SCMainWindow::setClockPaused(bool paused)
{
    m_recordingClock->setPaused(paused);
}

QDateTime SCMainWindow::now() const
{
    return QDateTime::currentDateTime();
}
