#include "screenshot/scscreenshotwindow.h"

#include "platform/windowing/capture_exclusion.h"
#include "platform/windowing/overlay_window.h"
#include "screenshot/screengrab.h"
#include "screenshot/scscreenshot.h"
#include "widgets/stylesheet.h"
#include "widgets/tooltip.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QThread>

#include <algorithm>
#include <array>
#include <cstdlib>

using framegeometry::HitArea;

namespace {

constexpr QSize kMinimumSize(100, 100);
constexpr int kToolBarHeightPx = 30;
/// Between the frame of a whole screen and the tool bar inside it.
constexpr int kInsetPx = 4;
/// Between the frame of a region and the tool bar below it.
constexpr int kGapPx = 2;
/// Half of it lies outside the window.
constexpr int kBorderPenPx = 4;
/// At the sides where the border reaches furthest into the window.
constexpr int kBorderDepthPx = 3;
constexpr int kStrokePx = 3;

/// What was below the border is painted again by its owner, and a compositor shows that with its next picture.
constexpr qint64 kRepaintMs = 100;
/// Compositors let windows fade out, and draw shadows around them.
constexpr qint64 kFadeMs = 400;
constexpr int kShadowPx = 32;
constexpr qint64 kLongestWaitMs = 1000;
constexpr unsigned long kPollMs = 10;

bool isClose(QRgb color, const QColor& expected)
{
    constexpr int kTolerance = 2;
    return std::abs(qRed(color) - expected.red()) <= kTolerance &&
           std::abs(qGreen(color) - expected.green()) <= kTolerance &&
           std::abs(qBlue(color) - expected.blue()) <= kTolerance;
}

bool isMostly(const QColor& color, const QPixmap& strip)
{
    const QImage image = strip.toImage();
    qint64 found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += isClose(image.pixel(x, y), color) ? 1 : 0;
    }
    return 2 * found > qint64(image.width()) * image.height();
}

/// A line each at the left, right, top and bottom of the frame.
std::array<QRect, 4> edgesOf(const QRect& frame)
{
    return {QRect(frame.topLeft(), frame.bottomLeft()), QRect(frame.topRight(), frame.bottomRight()),
            QRect(frame.topLeft(), frame.topRight()), QRect(frame.bottomLeft(), frame.bottomRight())};
}

QRect withShadow(const QWidget& window)
{
    return window.geometry().adjusted(-kShadowPx, -kShadowPx, kShadowPx, kShadowPx);
}

} // namespace

SCScreenshotWindow::SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent)
    : OverlayFrame(kMinimumSize,
                   PenStrokes(QPen(Qt::red, kStrokePx, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin),
                              PenStrokes::Click::LeavesNothing),
                   parent)
    , m_screenshot(*screenshot)
    , m_grabber(&grabOfScreen)
{
    buildToolBar();
    positionToolBar();
    toolBar().show();
    applyStyleSheet({this, &toolBar(), m_saveButton, m_cancelButton},
                    QStringLiteral(":/res/style/screenshot-window.qss"),
                    QStringLiteral("screenshot window stylesheet"));
    platform::prepareAsOverlay(*this);
    // One answer for both: by it goes what is taken away before a grab, and what is painted onto it.
    m_isExcluded = platform::excludeTogether({&toolBar(), this});
}

SCScreenshotWindow::~SCScreenshotWindow() = default;

void SCScreenshotWindow::buildToolBar()
{
    toolBar().setFixedHeight(kToolBarHeightPx);
    m_saveButton = addButton(QStringLiteral("saveButton"), QStringLiteral("capture"));
    m_drawButton = addButton(QStringLiteral("drawButton"), QStringLiteral("pen"));
    m_drawButton->setCheckable(true);
    m_clearButton = addButton(QStringLiteral("clearButton"), QStringLiteral("clear"));
    toolBarLayout().addStretch();
    m_cancelButton = addButton(QStringLiteral("cancelButton"), QStringLiteral("close"));
    connect(m_saveButton, &QPushButton::clicked, this, &SCScreenshotWindow::saveScreenshot);
    connect(m_drawButton, &QPushButton::clicked, this, &SCScreenshotWindow::drawOnScreenshot);
    connect(m_clearButton, &QPushButton::clicked, this, &SCScreenshotWindow::clearDraw);
    connect(m_cancelButton, &QPushButton::clicked, this, &SCScreenshotWindow::cancelScreenshot);
    retranslate();
    toolBar().adjustSize();
    platform::prepareAsOverlay(toolBar());
}

void SCScreenshotWindow::retranslate()
{
    setWindowTitle(tr("Screenshot"));
    describe(*m_saveButton, tr("Capture"));
    describe(*m_drawButton, tr("Start Drawing"));
    describe(*m_clearButton, tr("Clear Drawing"));
    describe(*m_cancelButton, tr("Close Window"));
}

void SCScreenshotWindow::show()
{
    OverlayFrame::show();
    raise();
    toolBar().raise();
    activateWindow();
}

QPoint SCScreenshotWindow::toolBarPosition() const
{
    const QRect frame = geometry();
    const QPoint inside(frame.right() - kInsetPx - toolBar().width(), frame.top() + kInsetPx);
    if (m_fullScreen)
        return inside;
    const QPoint below(frame.right() - toolBar().width(), frame.bottom() + kGapPx);
    // A window as high as the screen would leave the user without a button to press.
    const bool isReachable = QGuiApplication::screenAt(QRect(below, toolBar().size()).center()) != nullptr;
    return isReachable ? below : inside;
}

void SCScreenshotWindow::positionToolBar()
{
    toolBar().move(toolBarPosition());
    if (isVisible() && !m_capturing)
        toolBar().show();
}

bool SCScreenshotWindow::event(QEvent* event)
{
    if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::WindowUnblocked) {
        m_isBlocked = event->type() == QEvent::WindowBlocked;
        updateOpening();
        update();
    }
    return QWidget::event(event);
}

bool SCScreenshotWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || watched != &toolBar())
        return OverlayFrame::eventFilter(watched, event);
    // On Windows a press on the bar takes the keyboard from the frame.
    keyPressEvent(static_cast<QKeyEvent*>(event));
    return true;
}

void SCScreenshotWindow::drawOnScreenshot()
{
    setDrawMode(!isDrawMode(), *m_drawButton);
}

void SCScreenshotWindow::cancelScreenshot()
{
    emit screenshotCancelled();
    hide();
}

void SCScreenshotWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        cancelScreenshot();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        saveScreenshot();
        break;
    default:
        QWidget::keyPressEvent(event);
        break;
    }
}

HitArea SCScreenshotWindow::handleAt(const QPoint& position) const
{
    const HitArea area = framegeometry::hitAreaAt(position, size());
    // The inside moves nothing: it belongs to the windows below.
    return framegeometry::isResize(area) ? area : HitArea::None;
}

void SCScreenshotWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        activateWindow();
    OverlayFrame::mousePressEvent(event);
}

void SCScreenshotWindow::drag(HitArea area, const QRect& start, const QPoint& delta)
{
    setGeometry(framegeometry::resized(area, start, delta, minimumSize(), false));
    positionToolBar();
}

void SCScreenshotWindow::saveScreenshot()
{
    if (m_capturing)
        return;
    const bool wasShown = isVisible();
    const QScopedValueRollback<bool> capturing(m_capturing, true);
    updateCompositing();
    updateOpening();
    repaint();
    const bool hidMore = clearTheView();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    waitUntilUnseen(hidMore);
    // A hotkey may have begun something else meanwhile, which is not to be disturbed by a shot.
    if (wasShown && !isVisible())
        return;
    const QPixmap picture = grab();
    const bool isSaved = !picture.isNull() && m_screenshot.saveScreenshot(picture, QString());
    m_capturing = false;
    if (isSaved) {
        hide();
        emit screenshotSaved(m_screenshot.lastSavedPath());
        return;
    }
    comeBack();
}

void SCScreenshotWindow::comeBack()
{
    updateOpening();
    update();
    positionToolBar();
    // Whoever told the user what went wrong had the keyboard.
    activateWindow();
}

/// Takes away what stands over the frame and would be in the picture. Whether there was anything.
bool SCScreenshotWindow::clearTheView()
{
    bool hidSomething = false;
    QWidget* const tip = visibleToolTip();
    for (QWidget* const window : {tip, m_isExcluded ? nullptr : &toolBar()}) {
        if (window == nullptr || !window->isVisible() || !withShadow(*window).intersects(geometry()))
            continue;
        window->hide();
        hidSomething = true;
    }
    return hidSomething;
}

void SCScreenshotWindow::waitUntilUnseen(bool hadMore)
{
    if (m_isExcluded && !hadMore)
        return;
    const qint64 shortest = hadMore && isCompositing() ? kFadeMs : kRepaintMs;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < shortest || (waited.elapsed() < kLongestWaitMs && isBorderSeen())) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(kPollMs);
    }
}

bool SCScreenshotWindow::isBorderSeen() const
{
    QScreen* const shown = screenOfGrab();
    if (m_isExcluded || shown == nullptr)
        return false;
    const std::array<QRect, 4> edges = edgesOf(geometry());
    return std::ranges::any_of(
        edges, [this, shown](const QRect& edge) { return isMostly(kBorderColor, m_grabber(*shown, edge)); });
}

QScreen* SCScreenshotWindow::screenOfGrab() const
{
    QScreen* const holding = QGuiApplication::screenAt(geometry().topLeft());
    return holding != nullptr ? holding : QGuiApplication::primaryScreen();
}

QPixmap SCScreenshotWindow::grab() const
{
    QScreen* const shown = screenOfGrab();
    if (shown == nullptr)
        return {};
    QPixmap picture = m_grabber(*shown, geometry());
    if (m_isExcluded && isDrawMode() && !picture.isNull()) {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        strokes().paint(painter);
    }
    return picture;
}

int SCScreenshotWindow::borderDepthPx() const
{
    return kBorderDepthPx;
}

void SCScreenshotWindow::paintMixed(QPainter& painter) const
{
    if (isDrawMode()) {
        painter.setRenderHint(QPainter::Antialiasing);
        // The tool bar counts from the desktop's corner, the frame from its own.
        fillForPointer(painter, m_capturing ? QRegion(rect()) : QRegion(rect()) - toolBar().geometry());
        strokes().paint(painter);
    }
    if (!m_capturing)
        paintBorder(painter);
}

void SCScreenshotWindow::paintBorder(QPainter& painter) const
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kBorderColor, kBorderPenPx, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
