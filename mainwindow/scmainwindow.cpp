#include "mainwindow/scmainwindow.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "app/webaddresses.h"
#include "engine/capturetargets.h"
#include "engine/obswrapper.h"
#include "mainwindow/recordstatus.h"
#include "mainwindow/sccountdownwidget.h"
#include "platform/capture_exclusion.h"
#include "platform/frameless_window.h"
#include "platform/global_hotkey.h"
#include "ui_scmainwindow.h"
#include "widgets/hovericons.h"
#include "widgets/stylesheet.h"

#include <QCloseEvent>
#include <QDebug>
#include <QDesktopServices>
#include <QFileDialog>
#include <QScreen>
#include <QSettings>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QUrl>

#include <utility>

#include <array>
#include <stdexcept>

namespace {

constexpr int kRecordingClockIntervalMs = 1000;
const auto kStyleSheet = QStringLiteral(":/res/style/main-window.qss");
const auto kDefaultDevice = QStringLiteral("default");

// The engine's numbers and the window's are the same.
static_assert(ObsWrapper::kStatusStarting == recordstatus::kStarted &&
              ObsWrapper::kStatusEnded == recordstatus::kEnded);

/// The primary screen; a session without one gets an empty screen.
CaptureScreen primaryScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? CaptureScreen{screen->geometry(), screen->devicePixelRatio()} : CaptureScreen{};
}

QIcon image(const char* name)
{
    return QIcon(QStringLiteral(":/res/forms/images/%1.svg").arg(QLatin1String(name)));
}

} // namespace

SCMainWindow::SCMainWindow() : SCMainWindow(std::make_unique<ObsWrapper>()) {}

SCMainWindow::SCMainWindow(std::unique_ptr<ObsWrapper> engine)
    : m_ui(std::make_unique<Ui::SCMainWindow>())
    , m_obs(std::move(engine))
    , m_settings(openSettings())
    , m_recorder(*m_obs)
    , m_session(m_recorder, *this, nullptr)
    , m_shownStatus(recordstatus::kEnded)
{
    m_ui->setupUi(this);
    setUpFrame();
    SCLogger::instance()->initialize();
    applyStyleSheet(*this, kStyleSheet);
    applyDefaultSettings(*m_settings);
    applyStoredSettings();
    connectControls();
    connectSession();
    registerRecordingHotkey();
    m_ui->recordButton->setFocus();
    openFirstRunPage();
}

SCMainWindow::~SCMainWindow() = default;

void SCMainWindow::setTranslator(std::shared_ptr<SCTranslator> translator)
{
    m_translator = std::move(translator);
}

void SCMainWindow::setUpFrame()
{
    using platform::FramelessWindow;
    auto* const frame = new FramelessWindow(this);
    frame->setTitleBar(m_ui->titleBar);
    frame->setSystemButton(FramelessWindow::SystemButton::Minimise, m_ui->minimizeBtn);
    frame->setSystemButton(FramelessWindow::SystemButton::Close, m_ui->closeBtn);
    new HoverIcons(m_ui->minimizeBtn, QStringLiteral("minimize"));
    new HoverIcons(m_ui->closeBtn, QStringLiteral("close"));
    m_ui->logoLabel->setPixmap(
        QIcon(QStringLiteral(":/resources/logo.ico")).pixmap(QSize(24, 24), devicePixelRatioF()));
    m_ui->areaIcon->setPixmap(image("full-screen-white").pixmap(QSize(24, 24), devicePixelRatioF()));
}

void SCMainWindow::applyStoredSettings()
{
    for (const auto& [position, name] : settingstables::recordingFormats())
        m_ui->formatBox->insertItem(position, name);
    // The box's own delegate ignores how the style sheet draws its entries.
    m_ui->formatBox->setItemDelegate(new QStyledItemDelegate(m_ui->formatBox));
    showStoredFormat();
    const QString folder = m_settings->value(settingskeys::kRecordingSaveLocation).toString();
    m_ui->saveLocationEdit->setText(folder);
    m_ui->saveLocationEdit->setToolTip(folder);
}

void SCMainWindow::showStoredFormat()
{
    const QString stored = m_settings->value(settingskeys::kRecordingFormat).toString();
    try {
        m_ui->formatBox->setCurrentIndex(settingstables::recordingFormatPositions().at(stored));
    } catch (const std::out_of_range&) {
        SCLogger::warning(
            QStringLiteral("The stored recording format \"%1\" is none of the program's; the first one is used")
                .arg(stored));
        m_ui->formatBox->setCurrentIndex(0);
    }
}

void SCMainWindow::connectControls()
{
    connect(m_ui->minimizeBtn, &QPushButton::clicked, this, &QWidget::showMinimized);
    connect(m_ui->closeBtn, &QPushButton::clicked, this, &QWidget::close);
    connect(m_ui->recordButton, &QPushButton::clicked, &m_session, &RecordingSession::toggle);
    connect(m_ui->changeLocationButton, &QPushButton::clicked, this, &SCMainWindow::onChangeLocationClicked);
    // Only the user's choice is stored: a value that is not in the table stays as it is.
    connect(m_ui->formatBox, &QComboBox::activated, this, &SCMainWindow::onFormatChosen);
}

void SCMainWindow::connectSession()
{
    connect(m_obs.get(), &ObsWrapper::recordStatusChanged, &m_session, &RecordingSession::onRecordStatusChanged);
    connect(&m_session, &RecordingSession::stateChanged, this, &SCMainWindow::onStateChanged);
    connect(&m_session, &RecordingSession::statusChanged, this, &SCMainWindow::showRecordStatus);
    connect(&m_session, &RecordingSession::fileProduced, this, &SCMainWindow::fileProduced);
    // Asked while the user's session waits for the answer, after which the system ends the process.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, &m_session, &RecordingSession::finishAtOnce,
            Qt::DirectConnection);
}

void SCMainWindow::registerRecordingHotkey()
{
    m_recordingHotkey = new platform::GlobalHotkey(this);
    connect(m_recordingHotkey, &platform::GlobalHotkey::activated, &m_session, &RecordingSession::toggle);
    connect(m_recordingHotkey, &platform::GlobalHotkey::availabilityChanged, this,
            &SCMainWindow::onHotkeyAvailabilityChanged);
    const QString stored = m_settings->value(settingskeys::kRecordingHotkey).toString();
    const bool wanted = stored != QLatin1String("None");
    if (wanted && m_recordingHotkey->registerKey(QKeySequence::fromString(stored, QKeySequence::PortableText)))
        m_hotkeyInForce = stored;
    else if (wanted)
        SCLogger::warning(
            QStringLiteral("The hotkey \"%1\" cannot be used: %2").arg(stored, m_recordingHotkey->failureReason()));
    showHotkey();
}

void SCMainWindow::onHotkeyAvailabilityChanged(bool available, const QString& reason)
{
    const QString stored = m_settings->value(settingskeys::kRecordingHotkey).toString();
    m_hotkeyInForce = available ? stored : QString();
    if (available)
        SCLogger::info(QStringLiteral("The hotkey \"%1\" works again").arg(stored));
    else
        SCLogger::warning(
            QStringLiteral("The hotkey \"%1\" is lost with the new keyboard layout: %2").arg(stored, reason));
    showHotkey();
}

void SCMainWindow::showHotkey()
{
    m_ui->hotkeyLabel->setVisible(!m_hotkeyInForce.isEmpty());
    m_ui->hotkeyLabel->setText(QStringLiteral("%1: %2").arg(tr("Start/Stop"), m_hotkeyInForce));
}

void SCMainWindow::openFirstRunPage()
{
    if (!m_settings->value(settingskeys::kFirstRun).toBool())
        return;
    m_settings->setValue(settingskeys::kFirstRun, false);
    QDesktopServices::openUrl(QUrl(QLatin1String(webaddresses::kFirstRunPage)));
}

void SCMainWindow::initializeCapture()
{
    m_recordingClock = new QTimer(this);
    m_recordingClock->setInterval(kRecordingClockIntervalMs);
    connect(m_recordingClock, &QTimer::timeout, &m_session, &RecordingSession::onTick);

    if (QGuiApplication::primaryScreen() == nullptr) {
        qWarning() << "Failed to get primary screen";
        return;
    }
    const QSize size = primaryScreen().physicalSize();
    if (!m_obs->initialize(size.width(), size.height(), RecordingSession::kFramesPerSecond)) {
        SCLogger::warning(QStringLiteral("Failed to initialize OBS"));
        return;
    }
    SCLogger::info(QStringLiteral("OBS initialized successfully"));
    setUpScene();
    applyCaptureArea();
    restoreSwitches();
    m_recorder.setReady(true);
}

void SCMainWindow::setUpScene()
{
    const int result = m_obs->setupScene(ObsWrapper::kCaptureMonitor);
    if (result != 0)
        SCLogger::error(QStringLiteral("The capture scene could not be made: code %1").arg(result));
    m_obs->refreshCaptureTargets(false);
    m_obs->setDesktopAudioDevice(true, kDefaultDevice);
    m_obs->setMicDevice(true, kDefaultDevice);
}

void SCMainWindow::restoreSwitches()
{
    // The engine is told each state, whether or not it differs from the engine's own: a device shown as off is off.
    m_obs->setDesktopAudioDevice(m_settings->value(settingskeys::kSpeakerSwitch).toBool(), kDefaultDevice);
    m_obs->setMicDevice(m_settings->value(settingskeys::kMicSwitch).toBool(), kDefaultDevice);
    m_obs->setCaptureCursor(m_settings->value(settingskeys::kMouseSwitch).toBool());
}

void SCMainWindow::applyCaptureArea()
{
    const CaptureScreen screen = primaryScreen();
    const QRect& whole = screen.geometry;
    SCLogger::debug(QStringLiteral("Screen geometry: x=%1, y=%2, width=%3, height=%4")
                        .arg(whole.x())
                        .arg(whole.y())
                        .arg(whole.width())
                        .arg(whole.height()));
    const QRect area = m_captureArea.rectOn(screen);
    SCLogger::debug(QStringLiteral("position %1 %2 %3 %4")
                        .arg(area.x())
                        .arg(area.y())
                        .arg(area.x() + area.width())
                        .arg(area.y() + area.height()));
    const QSize size = m_captureArea.physicalSize(screen);
    m_ui->widthEdit->setText(QString::number(size.width()));
    m_ui->heightEdit->setText(QString::number(size.height()));
    setCaptureTarget(m_captureArea.margins(screen));
}

bool SCMainWindow::areaFollowsScreen() const
{
    // The whole screen follows the screen: its size or place may have changed since the last recording.
    const bool screenChanged =
        m_captureArea.mode() == CaptureMode::FullScreen && m_captureArea.rect() != primaryScreen().geometry;
    return m_captureArea.isUnset() || screenChanged;
}

bool SCMainWindow::resetRecordingArea()
{
    const CaptureScreen screen = primaryScreen();
    if (areaFollowsScreen()) {
        m_captureArea.setRect(screen.geometry);
        applyCaptureArea();
    }
    const QSize logical = m_captureArea.rectOn(screen).size();
    SCLogger::debug(QStringLiteral("Recording area set to: %1x%2").arg(logical.width()).arg(logical.height()));
    const QSize size = m_captureArea.physicalSize(screen);
    if (m_obs->resetVideo(size.width(), size.height(), size.width(), size.height(),
                          RecordingSession::kFramesPerSecond) != 0) {
        SCLogger::warning(QStringLiteral("Failed to reset video"));
        return false;
    }
    return true;
}

void SCMainWindow::setCaptureTarget(const CaptureMargins& margins)
{
    const QStringList& names = m_obs->captureTargetNames();
    const QString target = captureTargetForScreen(names, primaryScreen().physicalGeometry());
    m_targetFound = m_obs->setCaptureTarget(target.toUtf8().constData(), ObsWrapper::kCaptureMonitor, margins.cropped,
                                            margins.left, margins.right, margins.top, margins.bottom);
    if (!m_targetFound)
        SCLogger::warning(QStringLiteral("The primary screen is none of the engine's screens: \"%1\"")
                              .arg(names.join(QLatin1String("\", \""))));
}

void SCMainWindow::onChangeLocationClicked()
{
    SCLogger::info(QStringLiteral("Save location clicked"));
    // A dialog opened over a countdown would hold it up, and start the recording whenever the dialog is closed.
    if (m_session.state() != RecordingState::Idle)
        return;
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Choose Save Location"), m_ui->saveLocationEdit->text());
    if (folder.isEmpty())
        return;
    m_settings->setValue(settingskeys::kRecordingSaveLocation, folder);
    m_ui->saveLocationEdit->setText(folder);
    m_ui->saveLocationEdit->setToolTip(folder);
}

void SCMainWindow::onFormatChosen(int index)
{
    m_settings->setValue(settingskeys::kRecordingFormat, settingstables::recordingFormats().at(index));
}

void SCMainWindow::onStateChanged(RecordingState state)
{
    if (state == RecordingState::Idle && m_closeRequested)
        close();
}

void SCMainWindow::showRecordStatus(int status)
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
    m_ui->recordButton->setIcon(image(look.icon));
    m_ui->recordButton->setText(tr(look.label));
}

void SCMainWindow::retranslate()
{
    m_ui->retranslateUi(this);
    showHotkey();
    showRecordStatus(m_shownStatus);
}

void SCMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QMainWindow::changeEvent(event);
}

void SCMainWindow::closeEvent(QCloseEvent* event)
{
    if (m_session.state() == RecordingState::Idle) {
        QMainWindow::closeEvent(event);
        return;
    }
    // The file comes first; the window closes itself once the session has come back to idle.
    m_closeRequested = true;
    event->ignore();
    m_session.finish();
}

void SCMainWindow::minimiseWindow()
{
    showMinimized();
}

void SCMainWindow::restoreWindow()
{
    if (m_closeRequested)
        return;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void SCMainWindow::countDown(int from)
{
    m_countdown = new SCCountdownWidget(nullptr);
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
    // Screens come and go between recordings.
    m_obs->refreshCaptureTargets(false);
    // An area that is applied anew takes its target along.
    const bool applied = areaFollowsScreen();
    if (!resetRecordingArea())
        return false;
    if (!applied)
        setCaptureTarget(m_captureArea.margins(primaryScreen()));
    return m_targetFound;
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
    // Where the system cannot, the window stays out of the picture because it is minimised.
    platform::setExcludedFromCapture(*this, excluded);
}

void SCMainWindow::setClockRunning(bool running)
{
    if (running)
        m_recordingClock->start();
    else if (m_recordingClock != nullptr)
        m_recordingClock->stop();
}

QDateTime SCMainWindow::now() const
{
    return QDateTime::currentDateTime();
}
