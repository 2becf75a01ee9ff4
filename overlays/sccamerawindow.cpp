// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"

#include "app/sclogger.h"
#include "overlays/hoverborder.h"
#include "overlays/qtcamerasystem.h"
#include "platform/windowing/overlay_window.h"
#include "widgets/arrowkeys.h"

#include <QCloseEvent>
#include <QFutureWatcher>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QVideoWidget>
#include <QWindow>
#include <QtConcurrentRun>

#include <utility>

using framegeometry::HitArea;

namespace {

/// Tool | FramelessWindowHint | WindowStaysOnTopHint, and a bit of the window's type that has no name.
constexpr int kWindowFlags = 0x4081B;
constexpr QSize kMinimumSize(200, 112);
constexpr QSize kFirstSize(400, 225);
constexpr int kScreenMarginPx = 20;
constexpr int kRadiusPx = 5;
constexpr QColor kBackground(40, 40, 46, 240);

const auto kLabelStyle = QStringLiteral("QLabel { color: white; background-color: rgba(0, 0, 0, 180); }");
const auto kWindowStyle = QStringLiteral("SCCameraWindow {"
                                         "  background: rgba(40, 40, 46, 240);"
                                         "  border: 1px solid transparent;"
                                         "}"
                                         "SCCameraWindow:hover {"
                                         "  border: 1px solid #007ACC;"
                                         "}");

} // namespace

SCCameraWindow::SCCameraWindow(QWidget* parent) : SCCameraWindow(std::make_shared<QtCameraSystem>(), parent) {}

SCCameraWindow::SCCameraWindow(std::shared_ptr<CameraSystem> cameras, QWidget* parent, const CameraTimings& timings)
    : QWidget(parent, Qt::WindowFlags::fromInt(kWindowFlags))
    , m_system(std::move(cameras))
    , m_timings(timings)
    , m_videoWidget(new QVideoWidget(this))
    , m_session(*m_system, *m_videoWidget)
{
    setAttribute(Qt::WA_MouseTracking);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    // Closing the window must not end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    setMinimumSize(kMinimumSize);
    buildContent();
    platform::prepareAsOverlay(*this);
    // Creates the native window.
    winId();
    windowHandle()->installEventFilter(this);
    // The border of the style sheet would lie below the video.
    new HoverBorder(windowHandle(), kRadiusPx);
    connectSession();
    startDeviceTimer(m_timings.deviceCheckMs);
    m_session.checkDevices();
}

SCCameraWindow::~SCCameraWindow()
{
    SCLogger::info(QStringLiteral("Camera window destructor called"));
}

void SCCameraWindow::buildContent()
{
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_videoWidget->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_videoWidget->setAttribute(Qt::WA_MouseTracking);
    m_videoWidget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_videoWidget->setAspectRatioMode(Qt::KeepAspectRatio);
    layout->addWidget(m_videoWidget);

    auto* const mouseLayer = new QWidget(this);
    mouseLayer->setAttribute(Qt::WA_MouseTracking);
    mouseLayer->setAttribute(Qt::WA_TransparentForMouseEvents, false);
    mouseLayer->setStyleSheet(QStringLiteral("background: transparent;"));
    mouseLayer->raise();
    mouseLayer->setGeometry(rect());

    m_loadingLabel = new QLabel(this);
    m_loadingLabel->setAlignment(Qt::AlignCenter);
    m_loadingLabel->setStyleSheet(kLabelStyle);
    m_loadingLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_loadingLabel->hide();

    retranslate();
    setStyleSheet(kWindowStyle);
    resize(kFirstSize);
}

void SCCameraWindow::connectSession()
{
    connect(&m_session, &CameraSession::aspectChanged, this, &SCCameraWindow::fitToAspect);
    connect(&m_session, &CameraSession::started, this, [this] { scheduleRefresh(m_timings.refreshAfterStartMs); });
    connect(&m_session, &CameraSession::loadingEnded, m_loadingLabel, &QWidget::hide);
    connect(&m_session, &CameraSession::fallbackStarted, this, [this] {
        m_usesFallback = true;
        retranslate();
    });
}

void SCCameraWindow::retranslate()
{
    setWindowTitle(tr("Webcam"));
    m_loadingLabel->setText(m_usesFallback ? tr("Using fallback camera") : tr("Loading camera..."));
}

void SCCameraWindow::startDeviceTimer(int intervalMs)
{
    m_deviceTimer = new QTimer(this);
    m_deviceTimer->setInterval(intervalMs);
    connect(m_deviceTimer, &QTimer::timeout, &m_session, &CameraSession::checkDevices);
    m_deviceTimer->start();
}

void SCCameraWindow::show()
{
    QWidget::show();
    moveToStartPosition();
    m_loadingLabel->setGeometry(rect());
    m_loadingLabel->show();
    m_loadingLabel->raise();
    // The show event may have opened the camera already.
    if (m_session.isActive())
        m_loadingLabel->hide();
    raise();
    activateWindow();
    runDiagnostics();
}

void SCCameraWindow::moveToStartPosition()
{
    if (m_startGeometry.isValid()) {
        setGeometry(m_startGeometry);
        return;
    }
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    const QRect available = screen->availableGeometry();
    move(available.left() + available.width() - kScreenMarginPx - width(),
         available.top() + available.height() - kScreenMarginPx - height());
}

void SCCameraWindow::runDiagnostics()
{
    // The job may outlive the window.
    auto* const watcher = new QFutureWatcher<void>(this);
    connect(watcher, &QFutureWatcher<void>::finished, this, &SCCameraWindow::followUpDiagnostics);
    connect(watcher, &QFutureWatcher<void>::finished, watcher, &QObject::deleteLater);
    watcher->setFuture(QtConcurrent::run([cameras = m_system] { writeCameraDiagnostics(*cameras); }));
}

void SCCameraWindow::followUpDiagnostics()
{
    m_session.checkDevices();
    if (m_deviceTimer == nullptr)
        startDeviceTimer(m_timings.lateDeviceCheckMs);
    scheduleRefresh(m_timings.refreshAfterShowMs);
}

void SCCameraWindow::fitToAspect(float aspect)
{
    const int leastWidth = kMinimumSize.width();
    setMinimumSize(leastWidth, static_cast<int>(static_cast<float>(leastWidth) / aspect));
    resize(width(), static_cast<int>(static_cast<float>(width()) / aspect));
}

void SCCameraWindow::scheduleRefresh(int delayMs)
{
    QTimer::singleShot(delayMs, this, &SCCameraWindow::refreshVideo);
}

/// Some video surfaces paint nothing until their size changes.
void SCCameraWindow::refreshVideo()
{
    const QSize size = m_videoWidget->size();
    m_videoWidget->resize(size.width() + 1, size.height());
    m_videoWidget->resize(size);
    m_videoWidget->setVisible(true);
    m_videoWidget->repaint();
    repaint();
    SCLogger::info(QStringLiteral("Forced video widget update (size: %1x%2)").arg(size.width()).arg(size.height()));
}

/// Closes the window without the native one. Qt would destroy that together with the video surface, which would show
/// nothing from then on.
bool SCCameraWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != windowHandle() || event->type() != QEvent::Close)
        return QWidget::eventFilter(watched, event);
    QCoreApplication::sendEvent(this, event);
    return true;
}

void SCCameraWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void SCCameraWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    SCLogger::info(QStringLiteral("Camera window shown"));
    m_session.resume();
    scheduleRefresh(m_timings.refreshAfterShowEventMs);
}

void SCCameraWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    SCLogger::info(QStringLiteral("Camera window hidden"));
    m_session.suspend();
}

void SCCameraWindow::closeEvent(QCloseEvent* event)
{
    SCLogger::info(QStringLiteral("Camera window closing"));
    m_session.close();
    event->accept();
    m_session.close();
    hide();
}

void SCCameraWindow::keyPressEvent(QKeyEvent* event)
{
    const QPoint step = arrowkeys::stepOf(*event);
    if (step.isNull()) {
        QWidget::keyPressEvent(event);
        return;
    }
    const QRect changed =
        framegeometry::draggedAtAspect(arrowkeys::areaOf(*event), geometry(), step, minimumWidth(), m_session.aspect());
    if (m_pressing || !arrowkeys::isInSight(changed))
        return;
    m_startGeometry = changed;
    setGeometry(changed);
}

void SCCameraWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressing = true;
    m_pressPoint = event->globalPosition().toPoint();
    m_resizeEdge = framegeometry::hitAreaAt(event->position().toPoint(), size());
    m_startGeometry = geometry();
    event->accept();
}

void SCCameraWindow::mouseMoveEvent(QMouseEvent* event)
{
    updateCursor(event->position().toPoint());
    if (!m_pressing || !(event->buttons() & Qt::LeftButton))
        return;
    const QPoint delta = event->globalPosition().toPoint() - m_pressPoint;
    setGeometry(
        framegeometry::draggedAtAspect(m_resizeEdge, m_startGeometry, delta, minimumWidth(), m_session.aspect()));
    event->accept();
}

void SCCameraWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressing = false;
    m_resizeEdge = HitArea::None;
    updateCursor(event->position().toPoint());
    event->accept();
}

void SCCameraWindow::updateCursor(const QPoint& position)
{
    const HitArea area = framegeometry::hitAreaAt(position, size());
    // Moving shows the arrow.
    setCursor(area == HitArea::Move ? Qt::ArrowCursor : framegeometry::cursorOf(area));
}

void SCCameraWindow::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    reportGeometry();
}

void SCCameraWindow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    reportGeometry();
    // The layer that catches the mouse stays over the video.
    const QList<QWidget*> children = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* const child : children) {
        if (child != m_videoWidget && child != m_loadingLabel)
            child->setGeometry(rect());
    }
    // The video surface would cover the corners.
    setMask(HoverBorder::roundedRegion(rect(), kRadiusPx));
}

void SCCameraWindow::reportGeometry()
{
    emit windowGeometryChanged(pos(), pos() + QPoint(width(), height()));
}

void SCCameraWindow::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kBackground);
    painter.drawRoundedRect(rect(), kRadiusPx, kRadiusPx);
}
