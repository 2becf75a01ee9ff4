// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/scmainwindow.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "engine/obswrapper.h"
#include "mainwindow/capture/capturecontroller.h"
#include "mainwindow/capture/captureselection.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/capture/windowregion.h"
#include "mainwindow/dialogsuspension.h"
#include "mainwindow/filepage.h"
#include "mainwindow/formicons.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/notices/noticedisplay.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/outputoptions.h"
#include "mainwindow/recording/pausekey.h"
#include "mainwindow/recording/recordingview.h"
#include "mainwindow/screenshotsession.h"
#include "mainwindow/sourceswitches.h"
#include "mainwindow/webcamswitch.h"
#include "mainwindow/windowfit.h"
#include "overlays/qtcamerasystem.h"
#include "platform/windowing/frameless_window.h"
#include "platform/windowing/window_hold.h"
#include "ui_scmainwindow.h"
#include "widgets/focusring.h"
#include "widgets/messagebox.h"
#include "widgets/stylesheet.h"
#include "widgets/tooltip.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QSettings>

#include <utility>

SCMainWindow::SCMainWindow(const Durations& durations)
    : SCMainWindow(std::make_unique<ObsWrapper>(), std::make_shared<QtCameraSystem>(), durations)
{}

SCMainWindow::SCMainWindow(std::unique_ptr<ObsWrapper> engine, std::shared_ptr<CameraSystem> cameras,
                           const Durations& durations)
    : m_activity(activityFacts())
    , m_ui(std::make_unique<Ui::SCMainWindow>())
    , m_obs(std::move(engine))
    , m_settings(openSettings())
    , m_notices(new Notices(this))
{
    m_ui->setupUi(this);
    makeFrame();
    SCLogger::instance()->initialize();
    applyStyleSheet(*this, QStringLiteral(":/res/style/main-window.qss"));
    new FormIcons(this);
    new ToolTipExclusion(this);
    applyDefaultSettings(*m_settings);
    makeCapture(durations);
    makeRecording(durations);
    makeSources(std::move(cameras));
    showStoredSettings();
    makePages();
    connectScreenshots();
    makeMenu(durations);
    makeHotkeys();
    m_ui->recordButton->setFocus();
    m_menu->openFirstRunPage();
}

SCMainWindow::~SCMainWindow() = default;

Activity::Facts SCMainWindow::activityFacts()
{
    return {[this] { return m_view->session().state(); },
            [this] { return m_view != nullptr && m_view->isActive(); },
            [this] { return m_region->isSelecting() || m_screenshots->isActive(); },
            [this] { return m_screenshots->isGrabbing(); },
            &DialogSuspension::isAnswerAwaited,
            [] { return QApplication::activePopupWidget() != nullptr || QApplication::activeModalWidget() != nullptr; },
            [this] { return isVisible() && !isMinimized(); }};
}

void SCMainWindow::setTranslator(std::shared_ptr<SCTranslator> translator)
{
    m_menu->setTranslator(std::move(translator));
}

void SCMainWindow::initializeCapture()
{
    if (!m_capture->startEngine())
        return;
    m_switches->attachEngine(*m_obs);
    m_selection->restore();
    m_switches->restore();
    // Nothing is recorded yet.
    m_obs->setSceneRendered(false);
}

void SCMainWindow::makeFrame()
{
    auto* const frame = new platform::FramelessWindow(this);
    frame->setTitleBar(m_ui->titleBar);
    frame->setHitTestVisible(m_ui->menuBtn);
    frame->setHitTestVisible(m_ui->settingsBtn);
    frame->setSystemButton(platform::FramelessWindow::SystemButton::Minimise, m_ui->minimizeBtn);
    frame->setSystemButton(platform::FramelessWindow::SystemButton::Close, m_ui->closeBtn);
    connect(m_ui->minimizeBtn, &QPushButton::clicked, this, &QWidget::showMinimized);
    connect(m_ui->closeBtn, &QPushButton::clicked, this, &QWidget::close);
}

void SCMainWindow::makeCapture(const Durations& durations)
{
    connect(m_ui->changeLocationButton, &QPushButton::clicked, this,
            [] { SCLogger::info(QStringLiteral("Save location clicked")); });
    m_recordingOptions = std::make_unique<OutputOptions>(OutputOptions::recordings(*m_ui), *m_settings, m_activity);
    m_screenshotOptions = std::make_unique<OutputOptions>(OutputOptions::screenshots(*m_ui), *m_settings, m_activity);
    m_region = new RegionOverlays(this);
    m_screenshots = new ScreenshotSession(this, *m_region, m_activity, durations.windowGoneMs);
    m_selection = std::make_unique<CaptureSelection>(*m_ui, *m_recordingOptions, *m_settings);
    m_capture = std::make_unique<CaptureController>(*m_ui, *m_selection, *m_region, *m_screenshots, *m_obs, m_activity);
    connect(m_capture.get(), &CaptureController::sizeRefused, m_notices,
            [this](const QString& reason) { m_notices->post({reason}); });
}

void SCMainWindow::makeRecording(const Durations& durations)
{
    m_view = std::make_unique<RecordingView>(*this, *m_ui, *m_capture, *m_region, *m_recordingOptions, *m_obs,
                                             *m_settings, m_activity, *m_notices, durations);
    new NoticeDisplay(*m_notices, *m_ui->pages, *m_view, m_activity, durations);
    const RecordingSession* const session = &m_view->session();
    new DialogSuspension(this, m_activity, *session, *m_screenshots);
    connect(m_obs.get(), &ObsWrapper::recordStatusChanged, session, &RecordingSession::onRecordStatusChanged);
    connect(session, &RecordingSession::stateChanged, this, &SCMainWindow::onStateChanged);
    // Asked while the user's session waits for the answer, after which the system ends the process.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, session, &RecordingSession::finishAtOnce,
            Qt::DirectConnection);
}

void SCMainWindow::makeSources(std::shared_ptr<CameraSystem> cameras)
{
    const SourceRows rows{*m_ui->speakerSwitch, *m_ui->speakerDevicesButton, *m_ui->speakerMeter,
                          *m_ui->micSwitch,     *m_ui->micDevicesButton,     *m_ui->micMeter,
                          *m_ui->mouseSwitch};
    m_switches = new SourceSwitches(rows, *m_obs, *m_notices, *m_settings, this);
    m_webcam = new WebcamSwitch(*m_ui->webcamSwitch, std::move(cameras), this);
    new FocusRing(this,
                  {m_ui->screenSwitch, m_ui->mouseSwitch, m_ui->webcamSwitch, m_ui->speakerSwitch, m_ui->micSwitch});
}

void SCMainWindow::makePages()
{
    m_filePage = new FilePage(*m_settings, m_activity, *m_notices);
    m_ui->pages->addWidget(m_filePage);
    m_filePage->follow(*m_view);
    connect(&m_view->session(), &RecordingSession::fileProduced, this, &SCMainWindow::fileProduced);
    connect(this, &SCMainWindow::fileProduced, m_filePage, &FilePage::addFile);
    new WindowFit({*this, *m_ui->titleBar, *m_ui->sideBar, *m_ui->pages, *m_ui->recordingScroll});
    auto* const tabs = new QButtonGroup(this);
    tabs->addButton(m_ui->recordingTab, m_ui->pages->indexOf(m_ui->recordingPage));
    tabs->addButton(m_ui->screenshotTab, m_ui->pages->indexOf(m_ui->screenshotPage));
    tabs->addButton(m_ui->filesTab, m_ui->pages->indexOf(m_filePage));
    connect(tabs, &QButtonGroup::idClicked, this, [this](int page) {
        m_ui->pages->setCurrentIndex(page);
        if (m_ui->pages->currentWidget() == m_filePage)
            m_filePage->showNewest();
    });
}

void SCMainWindow::connectScreenshots()
{
    connect(m_ui->screenshotFullScreenTile, &Tile::activated, m_screenshots, &ScreenshotSession::frameScreen);
    connect(m_ui->screenshotRegionTile, &Tile::activated, m_screenshots, &ScreenshotSession::selectRegion);
    connect(m_ui->screenshotWindowTile, &Tile::activated, m_screenshots, &ScreenshotSession::selectWindow);
    connect(m_screenshots, &ScreenshotSession::restoreRequested, m_view.get(), &RecordingView::restoreWindow);
    auto* const windowRegion = new WindowRegion(*m_ui->fileNameEdit, *m_capture, *m_region, this);
    connect(m_screenshots, &ScreenshotSession::recordRequested, windowRegion, &WindowRegion::choose);
    connect(m_screenshots, &ScreenshotSession::recordRequested, m_ui->recordingTab, &QPushButton::click);
    connect(m_screenshots, &ScreenshotSession::saved, this, &SCMainWindow::onScreenshotSaved);
    connect(m_screenshots, &ScreenshotSession::folderReplaced, this,
            [this] { m_screenshotOptions->reportFallback(*m_notices); });
}

void SCMainWindow::makeMenu(const Durations& durations)
{
    m_menu = new MainMenu(this, *m_settings, m_activity, *m_notices, durations);
    connect(m_ui->menuBtn, &QPushButton::clicked, m_menu, [this] { m_menu->popUp(*m_ui->menuBtn); });
    connect(m_ui->settingsBtn, &QPushButton::clicked, m_menu, &MainMenu::openSettings);
    connect(m_menu, &MainMenu::settingsSaved, this, &SCMainWindow::onSettingsSaved);
    for (const auto* const options : {m_recordingOptions.get(), m_screenshotOptions.get()})
        connect(m_menu, &MainMenu::folderChosen, options, &OutputOptions::showStoredFolder);
    connect(m_menu, &MainMenu::languageChosen, this, &SCMainWindow::onLanguageChosen);
}

void SCMainWindow::makeHotkeys()
{
    m_hotkeys = new Hotkeys(this, m_activity, *m_notices);
    connect(m_hotkeys, &Hotkeys::recordingPressed, &m_view->session(), &RecordingSession::toggle);
    connect(m_hotkeys, &Hotkeys::screenshotPressed, m_screenshots, &ScreenshotSession::frameScreen);
    connect(m_hotkeys, &Hotkeys::recordingKeyChanged, this, &SCMainWindow::showHotkey);
    connect(m_hotkeys, &Hotkeys::settingsRequested, m_menu, &MainMenu::openSettings);
    m_hotkeys->apply(*m_settings);
    connect(new PauseKey(this, m_view->session(), *m_notices, [this] { return m_hotkeys->recordingKey(); }),
            &PauseKey::keyChanged, m_view.get(), &RecordingView::setPauseKey);
}

void SCMainWindow::showStoredSettings()
{
    m_recordingOptions->showStored();
    m_screenshotOptions->showStored();
    m_switches->applyStored();
}

void SCMainWindow::onStateChanged(RecordingState state)
{
    const bool idle = state == RecordingState::Idle;
    // What belongs to a recording is chosen before it, not during it.
    for (QWidget* const part :
         std::initializer_list<QWidget*>{m_ui->sizeCard, m_ui->screenSwitch, m_ui->formatBox, m_ui->settingsBtn})
        part->setEnabled(idle);
    for (Tile* const tile : findChildren<Tile*>())
        tile->setEnabled(idle);
    if (!idle)
        return;
    m_capture->onRecordingOver();
    m_filePage->onRecordingOver();
    if (m_activity.isClosing())
        close();
}

void SCMainWindow::onScreenshotSaved(const QString& path)
{
    emit fileProduced(path, QStringLiteral("screenshot"));
    m_view->restoreWindow();
    messagebox::informBeside(*this, tr("Screenshot Saved"), tr("Screenshot saved to: %1").arg(path),
                             m_filePage->actionsOn(path));
    m_ui->filesTab->click();
    m_filePage->showScreenshots();
}

void SCMainWindow::onLanguageChosen()
{
    retranslate();
    if (m_ui->fullScreenTile->isSelected() && m_activity.isIdle())
        m_capture->chooseFullScreen();
}

void SCMainWindow::onSettingsSaved()
{
    showStoredSettings();
    m_selection->fitScreenToFormat();
    m_hotkeys->apply(*m_settings);
}

void SCMainWindow::showHotkey()
{
    const QString key = m_hotkeys->recordingKey();
    m_ui->hotkeyLabel->setVisible(!key.isEmpty());
    m_ui->hotkeyLabel->setText(QStringLiteral("%1: %2").arg(tr("Start/Stop"), key));
}

void SCMainWindow::retranslate()
{
    m_ui->retranslateUi(this);
    showHotkey();
    m_view->showButton();
    m_filePage->retranslate();
}

void SCMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    // Where the system brings the window back without asking, it goes again.
    if (event->type() == QEvent::WindowStateChange && m_activity.isRecordingActive() && !isMinimized())
        QMetaObject::invokeMethod(m_view.get(), &RecordingView::minimiseWhileActive, Qt::QueuedConnection);
    QMainWindow::changeEvent(event);
}

bool SCMainWindow::nativeEvent(const QByteArray& eventType, void* message, qintptr* result)
{
    const auto answer = m_activity.isRecordingActive() ? platform::answerWhileHeld(eventType, message) : std::nullopt;
    if (!answer)
        return QMainWindow::nativeEvent(eventType, message, result);
    *result = *answer;
    return true;
}

void SCMainWindow::closeEvent(QCloseEvent* event)
{
    if (m_activity.isIdle()) {
        m_screenshots->cancelAll();
        m_webcam->switchOff();
        m_view->hideOverlays();
        QMainWindow::closeEvent(event);
        return;
    }
    // The file comes first; the window closes itself once the session has come back to idle.
    m_activity.setClosing();
    event->ignore();
    m_view->session().requestEnd();
}
