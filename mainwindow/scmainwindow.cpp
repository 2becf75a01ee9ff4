#include "mainwindow/scmainwindow.h"

#include "app/sclogger.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "engine/obswrapper.h"
#include "mainwindow/capture/ratiopresets.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/filepage.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/recording/recordingclock.h"
#include "mainwindow/recording/recordstatus.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/screenshotsession.h"
#include "mainwindow/sourceswitches.h"
#include "mainwindow/webcamswitch.h"
#include "overlays/qtcamerasystem.h"
#include "overlays/scswitchwidget.h"
#include "platform/windowing/frameless_window.h"
#include "platform/windowing/window_hold.h"
#include "ui_scmainwindow.h"
#include "widgets/combobox.h"
#include "widgets/desktopservices.h"
#include "widgets/focusring.h"
#include "widgets/icons.h"
#include "widgets/messagebox.h"
#include "widgets/stylesheet.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMouseEvent>
#include <QSettings>

#include <utility>

#include <stdexcept>

namespace {

const auto kStyleSheet = QStringLiteral(":/res/style/main-window.qss");
constexpr QSize kRowIconSize(20, 20);
constexpr QSize kLogoSize(24, 24);

int recordingFormatPosition(const QString& name)
{
    return settingstables::recordingFormatPositions().at(name);
}

int screenshotFormatPosition(const QString& name)
{
    return settingstables::screenshotFormatPositions().at(name);
}

void openPage(const char* address)
{
    openWebPage(QLatin1String(address));
}

} // namespace

SCMainWindow::SCMainWindow(const Durations& durations) : SCMainWindow(std::make_unique<ObsWrapper>(), durations) {}

SCMainWindow::SCMainWindow(std::unique_ptr<ObsWrapper> engine, const Durations& durations)
    : SCMainWindow(std::move(engine), std::make_shared<QtCameraSystem>(), durations)
{}

SCMainWindow::SCMainWindow(std::unique_ptr<ObsWrapper> engine, std::shared_ptr<CameraSystem> cameras,
                           const Durations& durations)
    : m_durations(durations)
    , m_activity(activityFacts())
    , m_ui(std::make_unique<Ui::SCMainWindow>())
    , m_obs(std::move(engine))
    , m_region(new RegionOverlays(this))
    , m_screenshots(new ScreenshotSession(this, *m_region, m_activity, durations.windowGoneMs))
    , m_settings(openSettings())
    , m_sources(*m_obs)
    , m_recorder(*m_obs)
    , m_session(m_recorder, *this, nullptr, durations)
    , m_shownStatus(recordstatus::kEnded)
{
    m_ui->setupUi(this);
    m_webcam = new WebcamSwitch(*m_ui->webcamSwitch, std::move(cameras), this);
    setUpFrame();
    SCLogger::instance()->initialize();
    applyStyleSheet(*this, kStyleSheet);
    setUpIcons();
    setUpBoxes();
    applyDefaultSettings(*m_settings);
    setUpSources();
    applyStoredSettings();
    armUpdateCheck();
    setUpMenu();
    connectDialogs();
    connectControls();
    setUpFilePage();
    connectPages();
    connectTiles();
    connectScreenshots();
    connectSession();
    setUpHotkeys();
    showMode();
    m_ui->recordButton->setFocus();
    openFirstRunPage();
}

SCMainWindow::~SCMainWindow() = default;

Activity::Facts SCMainWindow::activityFacts()
{
    return {[this] { return m_session.state(); },
            [this] { return m_region->isSelecting() || m_screenshots->isActive(); },
            [this] { return m_screenshots->isGrabbing(); },
            [] { return QApplication::activeModalWidget() != nullptr; },
            [] { return QApplication::activePopupWidget() != nullptr; },
            [this] { return isVisible() && !isMinimized(); }};
}

void SCMainWindow::setTranslator(std::shared_ptr<SCTranslator> translator)
{
    m_translator = std::move(translator);
}

void SCMainWindow::setUpFrame()
{
    using platform::FramelessWindow;
    auto* const frame = new FramelessWindow(this);
    frame->setTitleBar(m_ui->titleBar);
    frame->setHitTestVisible(m_ui->menuBtn);
    frame->setHitTestVisible(m_ui->settingsBtn);
    frame->setSystemButton(FramelessWindow::SystemButton::Minimise, m_ui->minimizeBtn);
    frame->setSystemButton(FramelessWindow::SystemButton::Close, m_ui->closeBtn);
}

void SCMainWindow::setUpIcons()
{
    new HoverIcons(m_ui->minimizeBtn, QStringLiteral("minimize"));
    new HoverIcons(m_ui->closeBtn, QStringLiteral("close"));
    new HoverIcons(m_ui->menuBtn, QStringLiteral("menu"));
    new HoverIcons(m_ui->settingsBtn, QStringLiteral("settings"));
    showPictures();
}

/// Made for the pixels of the screen that the window is on.
void SCMainWindow::showPictures()
{
    const auto show = [this](QLabel* label, const char* name) {
        label->setPixmap(icons::named(QLatin1String(name)).pixmap(kRowIconSize, devicePixelRatioF()));
    };
    show(m_ui->screenIcon, "screen");
    show(m_ui->mouseIcon, "mouse");
    show(m_ui->webcamIcon, "webcam");
    show(m_ui->speakerIcon, "speaker");
    show(m_ui->micIcon, "microphone");
    m_ui->logoLabel->setPixmap(QIcon(QStringLiteral(":/resources/logo.ico")).pixmap(kLogoSize, devicePixelRatioF()));
}

void SCMainWindow::setUpBoxes()
{
    m_ui->ratioBox->addItems(ratiopresets::names());
    for (const auto& [position, name] : settingstables::recordingFormats())
        m_ui->formatBox->insertItem(position, name);
    for (const auto& [position, name] : settingstables::screenshotFormats())
        m_ui->screenshotFormatBox->insertItem(position, name);
    for (QComboBox* const box : {m_ui->ratioBox, m_ui->formatBox, m_ui->screenshotFormatBox})
        prepareComboBox(*box);
}

void SCMainWindow::setUpSources()
{
    const SourceRows rows{*m_ui->speakerSwitch, *m_ui->speakerMeter, *m_ui->micSwitch, *m_ui->micMeter,
                          *m_ui->mouseSwitch};
    m_switches = new SourceSwitches(rows, m_sources, *m_settings, this);
    new FocusRing(this,
                  {m_ui->screenSwitch, m_ui->mouseSwitch, m_ui->webcamSwitch, m_ui->speakerSwitch, m_ui->micSwitch});
}

void SCMainWindow::applyStoredSettings()
{
    showStoredFormat(*m_ui->formatBox, settingskeys::kRecordingFormat, &recordingFormatPosition);
    showStoredFormat(*m_ui->screenshotFormatBox, settingskeys::kScreenshotFormat, &screenshotFormatPosition);
    showStoredFolders();
    m_switches->applyStored();
}

void SCMainWindow::showStoredFormat(QComboBox& box, QLatin1String key, int (*positionOf)(const QString&))
{
    const QString stored = m_settings->value(key).toString();
    try {
        box.setCurrentIndex(positionOf(stored));
    } catch (const std::out_of_range&) {
        SCLogger::warning(
            QStringLiteral("The stored format \"%1\" is none of the program's; the first one is used").arg(stored));
        box.setCurrentIndex(0);
    }
}

void SCMainWindow::showFolder(QLineEdit& field, const QString& folder)
{
    field.setText(folder);
    field.setToolTip(folder);
}

void SCMainWindow::setUpMenu()
{
    m_menu = new MainMenu(this);
    connect(m_menu, &MainMenu::languageChosen, this, &SCMainWindow::onLanguageChosen);
    connect(m_menu, &MainMenu::guideRequested, this, [] { openPage(webaddresses::kGuidePage); });
    connect(m_menu, &MainMenu::supportRequested, this, [] { openPage(webaddresses::kSupportPage); });
    connect(m_menu, &MainMenu::logFolderRequested, this, &SCMainWindow::openLogFolder);
    connect(m_ui->menuBtn, &QPushButton::clicked, this, &SCMainWindow::onMenuClicked);
}

void SCMainWindow::connectControls()
{
    connect(m_ui->minimizeBtn, &QPushButton::clicked, this, &QWidget::showMinimized);
    connect(m_ui->closeBtn, &QPushButton::clicked, this, &QWidget::close);
    connect(m_ui->recordButton, &QPushButton::clicked, this, &SCMainWindow::onRecordRequested);
    connect(m_ui->changeLocationButton, &QPushButton::clicked, this, &SCMainWindow::onChangeLocationClicked);
    connect(m_ui->changeScreenshotLocationButton, &QPushButton::clicked, this,
            &SCMainWindow::onChangeScreenshotLocationClicked);
    connect(m_ui->lockButton, &QPushButton::toggled, this, &SCMainWindow::onSizeLockToggled);
    connect(m_ui->screenSwitch, &SCSwitchWidget::checkedChanged, this, &SCMainWindow::onScreenSwitched);
    // Only the user's choice is stored: a value that is not in the table stays as it is.
    connect(m_ui->formatBox, &QComboBox::activated, this, &SCMainWindow::onFormatChosen);
    connect(m_ui->screenshotFormatBox, &QComboBox::activated, this, &SCMainWindow::onScreenshotFormatChosen);
    // Nor does the box choose a preset when the program sets it back to its first entry.
    connect(m_ui->ratioBox, &QComboBox::textActivated, this, &SCMainWindow::onRatioChosen);
}

void SCMainWindow::setUpFilePage()
{
    m_filePage = new FilePage(*m_settings, m_activity);
    m_ui->pages->addWidget(m_filePage);
    connect(this, &SCMainWindow::fileProduced, m_filePage, &FilePage::addFile);
}

void SCMainWindow::onPageChosen(int index)
{
    m_ui->pages->setCurrentIndex(index);
    if (m_ui->pages->currentWidget() == m_filePage)
        m_filePage->showNewest();
}

void SCMainWindow::connectScreenshots()
{
    connect(m_ui->screenshotFullScreenTile, &Tile::activated, m_screenshots, &ScreenshotSession::frameScreen);
    connect(m_ui->screenshotRegionTile, &Tile::activated, m_screenshots, &ScreenshotSession::selectRegion);
    connect(m_ui->screenshotWindowTile, &Tile::activated, m_screenshots, &ScreenshotSession::selectWindow);
    connect(m_screenshots, &ScreenshotSession::restoreRequested, this, &SCMainWindow::restoreWindow);
    connect(m_screenshots, &ScreenshotSession::saved, this, &SCMainWindow::onScreenshotSaved);
}

void SCMainWindow::onScreenshotSaved(const QString& path)
{
    emit fileProduced(path, QStringLiteral("screenshot"));
    restoreWindow();
    messagebox::information(this, tr("Screenshot Saved"), tr("Screenshot saved to: %1").arg(path));
    m_ui->filesTab->setChecked(true);
    m_ui->pages->setCurrentWidget(m_filePage);
    m_filePage->showScreenshots();
}

void SCMainWindow::connectPages()
{
    auto* const tabs = new QButtonGroup(this);
    tabs->addButton(m_ui->recordingTab, m_ui->pages->indexOf(m_ui->recordingPage));
    tabs->addButton(m_ui->screenshotTab, m_ui->pages->indexOf(m_ui->screenshotPage));
    tabs->addButton(m_ui->filesTab, m_ui->pages->indexOf(m_filePage));
    connect(tabs, &QButtonGroup::idClicked, this, &SCMainWindow::onPageChosen);
    new HoverIcons(m_ui->recordingTab, QStringLiteral("recording"));
    new HoverIcons(m_ui->screenshotTab, QStringLiteral("screenshot"));
    new HoverIcons(m_ui->filesTab, QStringLiteral("files"));
}

void SCMainWindow::connectTiles()
{
    for (Tile* const tile : findChildren<Tile*>())
        tile->installEventFilter(this);
    connect(m_ui->fullScreenTile, &Tile::activated, this, &SCMainWindow::onFullScreenChosen);
    connect(m_ui->regionTile, &Tile::activated, this, &SCMainWindow::onRegionChosen);
    connect(m_ui->windowTile, &Tile::activated, this, &SCMainWindow::onWindowChosen);
    connect(m_region, &RegionOverlays::regionSelected, this, &SCMainWindow::onRegionSelected);
    connect(m_region, &RegionOverlays::selectionCancelled, this, &SCMainWindow::onSelectionCancelled);
    connect(m_region, &RegionOverlays::frameChanged, this, &SCMainWindow::onFrameChanged);
    connect(m_region, &RegionOverlays::frameConcealed, this, &SCMainWindow::onFrameConcealed);
    connect(m_region, &RegionOverlays::frameClosed, this, &SCMainWindow::onFrameClosed);
    connect(m_region, &RegionOverlays::startRecording, this, &SCMainWindow::onRecordRequested);
    connect(m_region, &RegionOverlays::stopRecording, &m_session, &RecordingSession::requestEnd);
}

void SCMainWindow::connectSession()
{
    m_recordingClock = new RecordingClock(this, m_durations.clockTickMs);
    connect(m_recordingClock, &RecordingClock::tick, &m_session, &RecordingSession::onTick);
    connect(m_obs.get(), &ObsWrapper::recordStatusChanged, &m_session, &RecordingSession::onRecordStatusChanged);
    connect(&m_session, &RecordingSession::stateChanged, this, &SCMainWindow::onStateChanged);
    connect(&m_session, &RecordingSession::statusChanged, this, &SCMainWindow::showRecordStatus);
    connect(&m_session, &RecordingSession::elapsedChanged, this, &SCMainWindow::showElapsed);
    connect(&m_session, &RecordingSession::fileProduced, m_filePage, &FilePage::setRecordedFile);
    connect(&m_session, &RecordingSession::fileProduced, this, &SCMainWindow::fileProduced);
    // Asked while the user's session waits for the answer, after which the system ends the process.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, &m_session, &RecordingSession::finishAtOnce,
            Qt::DirectConnection);
}

void SCMainWindow::setUpHotkeys()
{
    m_hotkeys = new Hotkeys(this);
    connect(m_hotkeys, &Hotkeys::recordingPressed, this, &SCMainWindow::onRecordRequested);
    connect(m_hotkeys, &Hotkeys::screenshotPressed, m_screenshots, &ScreenshotSession::frameScreen);
    connect(m_hotkeys, &Hotkeys::recordingKeyChanged, this, &SCMainWindow::showHotkey);
    m_hotkeys->apply(*m_settings);
}

void SCMainWindow::showHotkey()
{
    const QString key = m_hotkeys->recordingKey();
    m_ui->hotkeyLabel->setVisible(!key.isEmpty());
    m_ui->hotkeyLabel->setText(QStringLiteral("%1: %2").arg(tr("Start/Stop"), key));
}

void SCMainWindow::openFirstRunPage()
{
    if (!m_settings->value(settingskeys::kFirstRun).toBool())
        return;
    m_settings->setValue(settingskeys::kFirstRun, false);
    openPage(webaddresses::kFirstRunPage);
}

void SCMainWindow::onMenuClicked()
{
    m_menu->popUp(*m_ui->menuBtn, m_settings->value(settingskeys::kLanguage).toString(), m_activity.isIdle());
}

void SCMainWindow::onLanguageChosen(int position)
{
    const QString& code = settingstables::languageCodes().at(position);
    m_settings->setValue(settingskeys::kLanguage, code);
    if (m_translator != nullptr) {
        m_translator->loadLanguage(code);
        // Installing is what tells every window; a translator that is installed twice would be asked twice.
        QCoreApplication::removeTranslator(m_translator.get());
        QCoreApplication::installTranslator(m_translator.get());
    }
    retranslate();
    if (m_ui->fullScreenTile->isSelected() && m_activity.isIdle())
        onFullScreenChosen();
}

void SCMainWindow::openLogFolder()
{
    openFile(QFileInfo(SCLogger::defaultPath()).absolutePath());
}

void SCMainWindow::chooseFolder(QLineEdit& field, const QString& title, QLatin1String key)
{
    // A dialog opened over a countdown would hold it up, and start the recording whenever the dialog is closed.
    if (!m_activity.isIdle())
        return;
    const QString folder = QFileDialog::getExistingDirectory(this, title, field.text());
    if (folder.isEmpty())
        return;
    m_settings->setValue(key, folder);
    showFolder(field, folder);
}

void SCMainWindow::onChangeLocationClicked()
{
    SCLogger::info(QStringLiteral("Save location clicked"));
    chooseFolder(*m_ui->saveLocationEdit, tr("Choose Save Location"), settingskeys::kRecordingSaveLocation);
}

void SCMainWindow::onChangeScreenshotLocationClicked()
{
    chooseFolder(*m_ui->screenshotLocationEdit, tr("Choose Screenshot Save Location"),
                 settingskeys::kScreenshotSaveLocation);
}

void SCMainWindow::onFormatChosen(int index)
{
    storeFormat(index);
    recordScreenForPicture();
}

void SCMainWindow::storeFormat(int index)
{
    m_settings->setValue(settingskeys::kRecordingFormat, settingstables::recordingFormats().at(index));
}

void SCMainWindow::onScreenshotFormatChosen(int index)
{
    m_settings->setValue(settingskeys::kScreenshotFormat, settingstables::screenshotFormats().at(index));
}

void SCMainWindow::retranslate()
{
    m_ui->retranslateUi(this);
    showHotkey();
    showRecordButton(m_shownStatus);
    m_filePage->retranslate();
}

bool SCMainWindow::eventFilter(QObject* watched, QEvent* event)
{
    auto* const tile = qobject_cast<Tile*>(watched);
    if (event->type() != QEvent::MouseButtonRelease || tile == nullptr)
        return QMainWindow::eventFilter(watched, event);
    const auto* const mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() == Qt::LeftButton && tile->isEnabled() && tile->rect().contains(mouse->position().toPoint()))
        emit tile->activated();
    return false;
}

bool SCMainWindow::event(QEvent* event)
{
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::ScreenChangeInternal)
        showPictures();
    return handled;
}

void SCMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    // Where the system brings the window back without asking, it goes again.
    if (event->type() == QEvent::WindowStateChange && m_recordingActive && !isMinimized())
        QMetaObject::invokeMethod(this, &SCMainWindow::minimiseWhileRecording, Qt::QueuedConnection);
    QMainWindow::changeEvent(event);
}

bool SCMainWindow::nativeEvent(const QByteArray& eventType, void* message, qintptr* result)
{
    if (m_recordingActive) {
        if (const auto answer = platform::answerWhileHeld(eventType, message)) {
            *result = *answer;
            return true;
        }
    }
    return QMainWindow::nativeEvent(eventType, message, result);
}

void SCMainWindow::closeEvent(QCloseEvent* event)
{
    if (m_activity.isIdle()) {
        m_screenshots->cancel();
        m_screenshots->cancelSelections();
        m_webcam->switchOff();
        hideOverlays();
        QMainWindow::closeEvent(event);
        return;
    }
    // The file comes first; the window closes itself once the session has come back to idle.
    m_activity.setClosing();
    event->ignore();
    m_session.finish();
}
