// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshot/scscreenshotwindow.h"

#include "platform/windowing/overlay_window.h"
#include "screenshot/scscreenshot.h"
#include "widgets/stylesheet.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>

#include <algorithm>

using framegeometry::HitArea;

namespace {

constexpr QSize kMinimumSize(100, 100);
constexpr int kToolBarHeightPx = 30;
/// Between the frame of a whole screen and the tool bar inside it.
constexpr int kInsetPx = 4;
/// Between the frame of a region and the tool bar below it.
constexpr int kGapPx = 2;
/// Left free for dragging the bar.
constexpr int kGripPx = 50;
/// Half of it lies outside the window.
constexpr int kBorderPenPx = 4;
/// At the sides where the border reaches furthest into the window.
constexpr int kBorderDepthPx = 3;
constexpr int kStrokePx = 3;

/// A bar that is wider than its frame does not leave the desktop at the frame's left.
QPoint keptOnDesktop(const QPoint& bar, const QRect& frame)
{
    const QScreen* const screen = QGuiApplication::screenAt(frame.topLeft());
    const bool isBeyond = screen != nullptr && QGuiApplication::screenAt({bar.x(), frame.top()}) == nullptr;
    return isBeyond ? QPoint(std::max(bar.x(), screen->geometry().left()), bar.y()) : bar;
}

} // namespace

SCScreenshotWindow::SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent)
    : OverlayFrame(kMinimumSize,
                   PenStrokes(QPen(Qt::red, kStrokePx, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin),
                              PenStrokes::Click::LeavesNothing),
                   parent)
    , m_screenshot(*screenshot)
{
    buildToolBar();
    SCScreenshotWindow::positionToolBar();
    platform::prepareAsOverlay(*this);
    // Excludes both from capture before the tool bar is on the screen.
    m_grab = std::make_unique<ScreenGrab>(*this, toolBar(), kBorderColor);
    toolBar().show();
    applyStyleSheet({this, &toolBar(), m_saveButton, m_cancelButton},
                    QStringLiteral(":/res/style/screenshot-window.qss"),
                    QStringLiteral("screenshot window stylesheet"));
}

SCScreenshotWindow::~SCScreenshotWindow() = default;

void SCScreenshotWindow::buildToolBar()
{
    toolBar().setFixedHeight(kToolBarHeightPx);
    m_saveButton = addButton(QStringLiteral("saveButton"), QStringLiteral("capture"));
    m_recordButton = makeButton(QStringLiteral("recordButton"), QStringLiteral("start-recording"));
    m_recordButton->hide();
    m_drawButton = addButton(QStringLiteral("drawButton"), QStringLiteral("pen"));
    m_drawButton->setCheckable(true);
    m_clearButton = addButton(QStringLiteral("clearButton"), QStringLiteral("clear"));
    toolBarLayout().addStretch();
    m_cancelButton = addButton(QStringLiteral("cancelButton"), QStringLiteral("close"));
    connect(m_saveButton, &QPushButton::clicked, this, &SCScreenshotWindow::saveScreenshot);
    connect(m_recordButton, &QPushButton::clicked, this, &SCScreenshotWindow::recordRequested);
    connect(m_drawButton, &QPushButton::clicked, this, &SCScreenshotWindow::drawOnScreenshot);
    connect(m_clearButton, &QPushButton::clicked, this, &SCScreenshotWindow::clearDraw);
    connect(m_cancelButton, &QPushButton::clicked, this, &SCScreenshotWindow::cancelScreenshot);
    SCScreenshotWindow::retranslate();
    fitToolBar();
    platform::prepareAsOverlay(toolBar());
}

void SCScreenshotWindow::retranslate()
{
    OverlayFrame::retranslate();
    setWindowTitle(tr("Screenshot"));
    describe(*m_saveButton, tr("Capture"));
    describe(*m_recordButton, tr("Record"));
    describe(*m_drawButton, tr("Start Drawing"));
    describe(*m_clearButton, tr("Clear Drawing"));
    describe(*m_cancelButton, tr("Close Window"));
}

void SCScreenshotWindow::show()
{
    OverlayFrame::show();
    showRecordButton();
    raise();
    activateWindow();
}

/// Beside the first button. The bar is as wide as what it shows.
void SCScreenshotWindow::showRecordButton()
{
    if (m_isRecordable)
        toolBarLayout().insertWidget(1, m_recordButton);
    else
        toolBarLayout().removeWidget(m_recordButton);
    m_recordButton->setVisible(m_isRecordable);
    fitToolBar();
    positionToolBar();
}

/// With the buttons that are not in its layout, which has its parts and their order.
void SCScreenshotWindow::fitToolBar()
{
    const int tools = undoButton().width() + redoButton().width();
    toolBar().resize(toolBarLayout().sizeHint().width() + tools + kGripPx, kToolBarHeightPx);
    toolBarLayout().activate();
    const int left = m_clearButton->x() + m_clearButton->width();
    undoButton().move(left, 0);
    redoButton().move(left + undoButton().width(), 0);
}

QPoint SCScreenshotWindow::toolBarPosition() const
{
    const QRect frame = geometry();
    const QPoint inside = keptOnDesktop({frame.right() - kInsetPx - toolBar().width(), frame.top() + kInsetPx}, frame);
    if (m_fullScreen)
        return inside;
    const QPoint below = keptOnDesktop({frame.right() - toolBar().width(), frame.bottom() + kGapPx}, frame);
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

void SCScreenshotWindow::hideEvent(QHideEvent* event)
{
    OverlayFrame::hideEvent(event);
    // They belong to another screenshot.
    forgetHiddenStrokes();
}

void SCScreenshotWindow::drawOnScreenshot()
{
    setDrawMode(!isDrawMode(), *m_drawButton);
}

void SCScreenshotWindow::clearDraw()
{
    m_drawPath = QPainterPath();
    m_paths.clear();
    clearStrokes();
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
    case Qt::Key_R:
        if (m_isRecordable && event->modifiers() == Qt::NoModifier)
            emit recordRequested();
        break;
    default:
        OverlayFrame::keyPressEvent(event);
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
    setGeometry(framegeometry::resized(area, start, delta, minimumSize(), 0.0));
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
    m_grab->clearView(isCompositing());
    // A hotkey may have started something else.
    if (wasShown && !isVisible())
        return;
    const QPixmap image = grab();
    const bool isSaved = !image.isNull() && m_screenshot.saveScreenshot(image, QString());
    if (isSaved) {
        QGuiApplication::clipboard()->setPixmap(image);
        hide();
        emit screenshotSaved(m_screenshot.lastSavedPath());
    }
    m_capturing = false;
    if (!isSaved)
        restore();
}

void SCScreenshotWindow::restore()
{
    updateOpening();
    update();
    positionToolBar();
    // The box that reported the failure had the keyboard.
    activateWindow();
}

QPixmap SCScreenshotWindow::grab() const
{
    QPixmap image = m_grab->grab();
    if (m_grab->isExcluded() && isDrawMode() && !image.isNull()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        paintDrawing(painter);
    }
    return image;
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
        paintDrawing(painter);
    }
    if (!m_capturing)
        paintBorder(painter);
}

void SCScreenshotWindow::paintDrawing(QPainter& painter) const
{
    for (const ColouredPath& entry : m_paths) {
        painter.setPen(QPen(entry.color, entry.widthPx));
        painter.drawPath(entry.path);
    }
    strokes().paint(painter);
    if (!m_drawPath.isEmpty())
        painter.drawPath(m_drawPath);
}

void SCScreenshotWindow::paintBorder(QPainter& painter) const
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kBorderColor, kBorderPenPx, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
