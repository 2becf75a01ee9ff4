// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingview.h"

#include "app/settings.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/capturecontroller.h"
#include "mainwindow/capture/captureselection.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/notices/floatingnotice.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/outputoptions.h"
#include "mainwindow/recording/recordingkeeper.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/recording/toolbarplacement.h"
#include "platform/input/global_hotkey.h"
#include "platform/windowing/frame_exclusion.h"
#include "platform/windowing/window_hold.h"
#include "ui_scmainwindow.h"
#include "widgets/icons.h"

#include <utility>

#include <array>

RecordingView::RecordingView(QWidget& window, Ui::SCMainWindow& ui, CaptureController& capture, RegionOverlays& region,
                             OutputOptions& output, RecorderPort& recorder, const QSettings& settings,
                             const Activity& activity, Notices& notices, const Durations& durations,
                             std::function<bool(QWidget&, bool)> setExcluded)
    : m_window(window)
    , m_ui(ui)
    , m_capture(capture)
    , m_region(region)
    , m_output(output)
    , m_recorder(recorder)
    , m_settings(settings)
    , m_activity(activity)
    , m_durations(durations)
    , m_setExcluded(std::move(setExcluded))
    , m_session(recorder, *this, nullptr, durations)
{
    connect(&m_session, &RecordingSession::statusChanged, this, &RecordingView::showStatus);
    connect(&m_session, &RecordingSession::elapsedChanged, this, &RecordingView::showElapsed);
    connect(m_ui.recordButton, &QPushButton::clicked, this, &RecordingView::onButtonClicked);
    connect(&m_capture, &CaptureController::areaMoved, this, &RecordingView::positionBar);
    connect(&m_capture, &CaptureController::screensSettled, this, [this] {
        if (m_status != recordstatus::kEnded)
            positionBar();
    });
    connect(&m_capture, &CaptureController::presetChosen, this, [this] {
        if (m_toolbar != nullptr)
            m_toolbar->hide();
    });
    connect(&m_capture, &CaptureController::frameClosed, &m_session, &RecordingSession::cancelCountdown);
    connectRegion();
    makeKeeper(notices);
}

RecordingView::~RecordingView() = default;

void RecordingView::connectRegion()
{
    connect(&m_region, &RegionOverlays::startRecording, &m_session, &RecordingSession::toggle);
    connect(&m_region, &RegionOverlays::stopRecording, &m_session, &RecordingSession::requestEnd);
    connect(&m_region, &RegionOverlays::frameConcealed, this, [this](bool concealed) {
        if (m_toolbar != nullptr)
            m_toolbar->setConcealed(concealed);
        if (m_notice != nullptr)
            m_notice->setConcealed(concealed);
    });
}

void RecordingView::makeKeeper(Notices& notices)
{
    m_keeper = std::make_unique<RecordingKeeper>(
        m_session, notices, [this] { return m_output.chooseFolder(); }, m_durations.fileWatchMs);
    connect(&m_session, &RecordingSession::folderReplaced, this,
            [this, &notices] { m_output.reportFallback(notices); });
    connect(m_keeper.get(), &RecordingKeeper::fileMoved, this, &RecordingView::fileMoved);
    connect(m_keeper.get(), &RecordingKeeper::fileSaved, this, &RecordingView::fileSaved);
}

void RecordingView::showStatus(int status)
{
    m_status = status;
    platform::setHeld(m_window, isActive());
    showButton();
    // The frame's bar may move, to which the floating one keeps clear.
    m_region.setRecording(status != recordstatus::kEnded, m_recorder.leavesOutOwnWindows());
    if (status == recordstatus::kStarted)
        showOverlays();
    else if (status == recordstatus::kPaused)
        toolbar().setPaused(true);
    else
        focusButton();
    m_region.setPaused(status == recordstatus::kPaused);
}

/// Whoever brings the window back during a pause wants to go on; bar, frame and hotkey end the recording.
void RecordingView::onButtonClicked()
{
    if (m_session.state() == RecordingState::Paused)
        m_session.setPaused(false);
    else
        m_session.toggle();
}

void RecordingView::showButton()
{
    struct Look
    {
        const char* icon;
        const char* label;
    };
    static constexpr std::array<Look, 3> kLooks{{{"stop-recording", QT_TR_NOOP("Stop Recording")},
                                                 {"pause-recording", QT_TR_NOOP("Pause Recording")},
                                                 {"start-recording", QT_TR_NOOP("Start Recording")}}};
    const Look& look = kLooks.at(static_cast<std::size_t>(m_status));
    m_ui.recordButton->setIcon(icons::named(QLatin1String(look.icon)));
    m_ui.recordButton->setText(tr(look.label));
    // The text says what the recording does, not what the button will do.
    m_ui.recordButton->setToolTip(m_status == recordstatus::kPaused ? tr("Resume Recording") : QString());
}

SCFullscreenToolbar& RecordingView::toolbar()
{
    if (m_toolbar == nullptr) {
        m_toolbar = std::make_unique<SCFullscreenToolbar>(nullptr, m_durations);
        platform::setExcludedFromFrames(*m_toolbar, true);
        connect(m_toolbar.get(), &SCFullscreenToolbar::recordingToggled, this,
                [this](bool record) { record ? m_session.toggle() : m_session.requestEnd(); });
        connect(m_toolbar.get(), &SCFullscreenToolbar::pauseToggled, &m_session, &RecordingSession::setPaused);
    }
    return *m_toolbar;
}

FloatingNotice& RecordingView::notice()
{
    if (m_notice == nullptr) {
        m_notice = std::make_unique<FloatingNotice>(m_durations);
        excludeNotice();
    }
    return *m_notice;
}

void RecordingView::setPauseKey(const QString& key)
{
    m_pauseKey = key;
    if (m_toolbar != nullptr)
        m_toolbar->setPauseKey(key);
}

void RecordingView::showNotice(const Notice& notice)
{
    if (m_status == recordstatus::kEnded)
        return;
    this->notice().add(notice);
    positionBar();
}

void RecordingView::showOverlays()
{
    m_capture.showFrame();
    SCFullscreenToolbar& bar = toolbar();
    bar.setRecording(true);
    bar.setPaused(false);
    bar.setPausable(m_recorder.canPauseRecording());
    bar.setPauseKey(m_pauseKey);
    bar.setAudioOnly(!m_capture.selection().recordsVideo());
    positionBar();
    bar.show();
}

/// Where it would be in the video, outside the recorded area as far as there is such a position. Beside the frame's
/// bar.
void RecordingView::positionBar()
{
    if (m_toolbar == nullptr)
        return;
    const QRect recorded = m_capture.selection().recordsVideo() ? m_capture.area() : QRect();
    const bool isLeftOut = m_recorder.leavesOutOwnWindows();
    const bool isRecordedThere = !m_isBarExcluded && !isLeftOut;
    const ToolbarPlacement placement = placeToolbar(primaryScreen().geometry, m_toolbar->size(),
                                                    isRecordedThere ? recorded : QRect(), m_region.frameBar());
    m_toolbar->move(placement.topLeft);
    m_toolbar->setTopEdgeOnly(placement.topEdgeOnly);
    m_toolbar->setRecordedArea(isLeftOut ? QRect() : recorded);
    if (m_notice != nullptr)
        m_notice->placeBeside(m_toolbar->geometry(), m_isNoticeExcluded || isLeftOut ? QRect() : recorded);
}

void RecordingView::hideOverlays()
{
    if (m_toolbar != nullptr) {
        m_toolbar->setRecording(false);
        m_toolbar->setPaused(false);
        m_toolbar->hide();
    }
    if (m_notice != nullptr)
        m_notice->clear();
    m_region.hideFrame();
}

void RecordingView::showElapsed(const QString& text)
{
    toolbar().setTimeText(text);
    m_region.setTimeText(text);
}

void RecordingView::minimiseWindow()
{
    m_window.showMinimized();
}

void RecordingView::minimiseWhileActive()
{
    if (isActive())
        minimiseWindow();
}

bool RecordingView::isWindowMinimised() const
{
    return m_window.isMinimized() || !m_window.isVisible();
}

void RecordingView::restoreWindow()
{
    if (m_activity.isClosing())
        return;
    m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}

void RecordingView::focusButton()
{
    // Another page keeps its own.
    if (m_ui.recordButton->isVisibleTo(&m_window))
        m_ui.recordButton->setFocus();
}

void RecordingView::countDown(int from)
{
    m_capture.settleArea();
    m_countdown = new SCCountdownWidget(nullptr, m_durations.countdownStepMs);
    const QPoint centre = captureCentre(m_capture.area());
    m_countdown->move(centre - QPoint(m_countdown->width() / 2, m_countdown->height() / 2));
    connect(m_countdown, &SCCountdownWidget::closed, &m_session, &RecordingSession::cancelCountdown);
    // Whatever has the keyboard.
    platform::GlobalHotkey escape(nullptr, platform::GlobalHotkey::WhenHeld::Listen);
    connect(&escape, &platform::GlobalHotkey::activated, &m_session, &RecordingSession::cancelCountdown);
    escape.registerKey(QKeySequence(Qt::Key_Escape));
    m_countdown->start(from);
    m_countdown->exec();
    // The program is about to quit.
    if (m_countdown->isCounting())
        m_session.cancelCountdown();
    m_countdown->deleteLater();
    m_countdown.clear();
}

void RecordingView::cancelCountdown()
{
    m_countdown->cancel();
    m_countdown->hide();
}

bool RecordingView::prepareCapture()
{
    return m_capture.prepare();
}

RecordingChoices RecordingView::choices() const
{
    RecordingChoices choices;
    choices.fileName = m_ui.fileNameEdit->text();
    choices.folder = m_output.folder();
    choices.formatIndex = m_output.format();
    choices.areaSize = m_capture.area().size();
    choices.widthPx = m_capture.videoSize().width();
    choices.heightPx = m_capture.videoSize().height();
    choices.showCursor = m_settings.value(settingskeys::kMouseShowCursor).toBool();
    choices.pointerEffects = m_settings.value(settingskeys::kMouseSwitch).toBool();
    choices.now = QDateTime::currentDateTime();
    return choices;
}

void RecordingView::setExcludedFromCapture(bool excluded)
{
    // Where nobody can, the window is minimised and the bar is outside the area. The system may exclude the one and
    // not the other.
    m_setExcluded(m_window, excluded);
    platform::setExcludedFromFrames(m_window, excluded);
    m_isBarExcluded = m_setExcluded(toolbar(), excluded) && excluded;
    m_isExcluding = excluded;
    if (m_notice != nullptr)
        excludeNotice();
}

void RecordingView::excludeNotice()
{
    m_isNoticeExcluded = m_setExcluded(*m_notice, m_isExcluding) && m_isExcluding;
}
