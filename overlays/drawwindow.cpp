// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/drawwindow.h"

#include "overlays/framebar.h"
#include "platform/windowing/frame_exclusion.h"
#include "platform/windowing/overlay_window.h"
#include "widgets/blinkinglabel.h"
#include "widgets/desktopscreens.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"
#include "widgets/tooltip.h"
#include "widgets/windowmask.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>

#include <utility>

#include <algorithm>
#include <cmath>

using framegeometry::HitArea;

namespace {

constexpr QSize kMinimumSize(200, 150);
constexpr QRect kFirstGeometry(100, 100, 800, 600);
constexpr QSize kTimeSize(100, 30);
constexpr int kStrokePx = 2;
/// Left free for dragging the bar.
constexpr int kGripPx = 36;

QList<QRect> screenGeometries()
{
    QList<QRect> geometries;
    for (const QScreen* const screen : desktopscreens::all())
        geometries.append(screen->geometry());
    return geometries;
}

} // namespace

DrawWindow::DrawWindow(QWidget* parent, std::function<bool(QWidget&, bool)> setExcluded)
    : OverlayFrame(kMinimumSize, PenStrokes(QPen(Qt::red, kStrokePx), PenStrokes::Click::LeavesDot), parent)
    , m_setExcluded(std::move(setExcluded))
{
    setWindowTitle(QStringLiteral("Drawing Window"));
    buildToolBar();
    buildTools();
    DrawWindow::retranslate();
    DrawWindow::positionToolBar();
    if (QGuiApplication::primaryScreen() != nullptr)
        setGeometry(kFirstGeometry);
    applyStyleSheet({this, &toolBar(), m_drawToggleButton, m_clearButton, m_closeButton, m_startButton, m_timerLabel},
                    QStringLiteral(":/res/style/draw-window.qss"), QStringLiteral("draw window stylesheet"));
    platform::prepareAsOverlay(*this);
    platform::prepareAsOverlay(toolBar());
    platform::setExcludedFromFrames(toolBar(), true);
    connect(&m_hideWhileDragging, &HideWhileDragging::concealed, this, [this] { setConcealed(true); });
    connect(&m_hideWhileDragging, &HideWhileDragging::moved, this, &DrawWindow::moveWithToolBar);
    connect(&m_hideWhileDragging, &HideWhileDragging::ended, this, [this] { reportGeometry(false); });
    connect(&m_hideWhileDragging, &HideWhileDragging::revealed, this, [this] { setConcealed(false); });
}

DrawWindow::~DrawWindow() = default;

void DrawWindow::buildToolBar()
{
    toolBarLayout().setAlignment(Qt::AlignLeft);
    m_drawToggleButton = addButton(QStringLiteral("drawToggleButton"), QStringLiteral("pen"));
    m_drawToggleButton->setCheckable(true);
    m_clearButton = addButton(QStringLiteral("clearButton"), QStringLiteral("clear"));
    m_timerLabel = new BlinkingLabel(QStringLiteral("00:00:00"), &toolBar());
    m_timerLabel->setObjectName(QStringLiteral("timerLabel"));
    m_timerLabel->setAlignment(Qt::AlignCenter);
    m_timerLabel->setFixedSize(kTimeSize);
    toolBarLayout().addWidget(m_timerLabel, 0, Qt::AlignCenter);
    m_startButton = addButton(QStringLiteral("startButton"), QString());
    m_startButton->setCheckable(true);
    m_closeButton = addButton(QStringLiteral("closeButton"), QStringLiteral("close"));
    connect(m_drawToggleButton, &QPushButton::toggled, this, [this](bool on) { setDrawMode(on, *m_drawToggleButton); });
    connect(m_clearButton, &QPushButton::clicked, this, &DrawWindow::clearStrokes);
    connect(m_startButton, &QPushButton::clicked, this, &DrawWindow::onStartButton);
    connect(m_closeButton, &QPushButton::clicked, this, &DrawWindow::onCloseButton);
    setRecording(false);
    m_partsSize = toolBar().sizeHint();
}

/// Not in the layout, which has its parts and their order.
void DrawWindow::buildTools()
{
    m_tools = new QWidget(&toolBar());
    auto* const layout = new QHBoxLayout(m_tools);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_followButton = makeButton(QStringLiteral("followButton"), QStringLiteral("follow-window"));
    m_followButton->setCheckable(true);
    m_followButton->hide();
    for (QPushButton* const button : {m_followButton, &undoButton(), &redoButton()})
        layout->addWidget(button);
    connect(m_followButton, &QPushButton::toggled, this, &DrawWindow::showFollowing);
    connect(&m_strokeHotkeys, &StrokeHotkeys::undoPressed, this, &DrawWindow::undoStroke);
    connect(&m_strokeHotkeys, &StrokeHotkeys::redoPressed, this, &DrawWindow::redoStroke);
}

void DrawWindow::retranslate()
{
    OverlayFrame::retranslate();
    describe(*m_followButton, tr("Follow the window"));
    describe(*m_drawToggleButton, tr("Start Drawing"));
    describe(*m_clearButton, tr("Clear Drawing"));
    describe(*m_startButton, m_recording ? tr("Stop Recording") : tr("Start Recording"));
    describe(*m_closeButton, tr("Close Window"));
}

void DrawWindow::setBorderWidth(int widthPx)
{
    m_borderWidth = widthPx;
    updateOpening();
    update();
}

void DrawWindow::setRecording(bool recording)
{
    m_recording = recording;
    m_startButton->setIcon(
        icons::named(recording ? QStringLiteral("stop-recording") : QStringLiteral("start-recording")));
    m_startButton->setChecked(recording);
    describe(*m_startButton, m_recording ? tr("Stop Recording") : tr("Start Recording"));
    update();
}

void DrawWindow::setInsideRecorded(bool recorded, bool leavesOutBar)
{
    m_insideRecorded = recorded;
    const bool isExcluded = m_setExcluded(toolBar(), recorded);
    m_isBarLeftOut = leavesOutBar || isExcluded;
    m_areTipsLeftOut = leavesOutBar;
    if (!recorded)
        m_hideWhileDragging.cancel();
    positionToolBar();
}

void DrawWindow::setConcealed(bool concealed)
{
    m_concealed = concealed;
    // A hidden bar would lose the mouse in mid-drag.
    if (concealed)
        toolBar().setMask(maskOfNothing());
    else
        toolBar().clearMask();
    updateOpening();
    update();
    emit concealedChanged(concealed);
}

void DrawWindow::setTimeText(const QString& text)
{
    m_timerLabel->setText(text);
}

void DrawWindow::setPaused(bool paused)
{
    m_timerLabel->setBlinking(paused);
}

/// The strokes are inside it, and are recorded.
void DrawWindow::showEvent(QShowEvent* event)
{
    platform::excludeBorderFromFrames(*this, static_cast<int>(std::lround(paintedBorderWidth() * devicePixelRatio())));
    OverlayFrame::showEvent(event);
    drawingChanged();
}

void DrawWindow::hideEvent(QHideEvent* event)
{
    m_hideWhileDragging.cancel();
    OverlayFrame::hideEvent(event);
    drawingChanged();
}

void DrawWindow::positionToolBar()
{
    // The bar stays in the user's hand.
    if (!isToolBarDragged()) {
        const QRect wanted = wantedToolBar();
        toolBar().setFixedSize(wanted.size());
        m_toolBarOffset = wanted.topLeft() - pos();
    }
    toolBar().move(pos() + m_toolBarOffset);
    showTools();
    raiseToolBarInside();
}

QRect DrawWindow::wantedToolBar() const
{
    const int few = fewToolsWidth();
    const int least = m_followButton->isHidden() ? std::min(width(), few) : few;
    const int inside = width() < 2 * allToolsWidth() ? few : allToolsWidth();
    const framebar::Size size{m_partsSize.height(), least, inside + kGripPx};
    return framebar::placed(geometry(), size, screenGeometries(), !m_insideRecorded || m_isBarLeftOut);
}

int DrawWindow::fewToolsWidth() const
{
    return m_partsSize.width() + (m_followButton->isHidden() ? 0 : m_followButton->width());
}

int DrawWindow::allToolsWidth() const
{
    return fewToolsWidth() + undoButton().width() + redoButton().width();
}

void DrawWindow::showTools()
{
    const bool hasRoom = allToolsWidth() + kGripPx <= toolBar().width();
    undoButton().setVisible(hasRoom);
    redoButton().setVisible(hasRoom);
    const int width = (hasRoom ? allToolsWidth() : fewToolsWidth()) - m_partsSize.width();
    m_tools->setGeometry(m_partsSize.width(), 0, width, m_partsSize.height());
}

bool DrawWindow::isToolBarInside() const
{
    return geometry().intersects(toolBar().geometry());
}

/// Above the frame, which takes the pointer while the pen is on.
void DrawWindow::raiseToolBarInside()
{
    if (toolBar().isVisible() && isToolBarInside())
        toolBar().raise();
}

void DrawWindow::offerFollowing(bool offered)
{
    m_followButton->setChecked(false);
    m_followButton->setVisible(offered);
    positionToolBar();
}

void DrawWindow::showFollowing(bool on)
{
    m_followButton->setIcon(
        icons::named(QStringLiteral("follow-window"), on ? icons::Tone::Light : icons::Tone::Normal));
    emit followToggled(on);
}

bool DrawWindow::followTo(const QPoint& firstPixel)
{
    const QPoint topLeft = firstPixel - inside().topLeft();
    if (isDragged())
        return false;
    moveOrHide(topLeft);
    m_hideWhileDragging.end();
    return true;
}

void DrawWindow::endToolBarDrag()
{
    // What keeps clear of the bar asks for it with the report of the area.
    positionToolBar();
    m_hideWhileDragging.end();
}

void DrawWindow::drawingChanged()
{
    OverlayFrame::drawingChanged();
    m_strokeHotkeys.hold(undoButton().isEnabled() && isVisible(), redoButton().isEnabled() && isVisible());
    raiseToolBarInside();
}

bool DrawWindow::event(QEvent* event)
{
    const bool isHandled = OverlayFrame::event(event);
    // Windows raises what it activates.
    if (event->type() == QEvent::WindowActivate)
        raiseToolBarInside();
    if (event->type() == QEvent::WindowDeactivate)
        noteKeyboard();
    return isHandled;
}

void DrawWindow::takeKeyboard()
{
    m_isKeyboardTaken = true;
    OverlayFrame::takeKeyboard();
}

void DrawWindow::noteKeyboard()
{
    m_isKeyboardTaken = m_isKeyboardTaken && hasKeyboard();
}

void DrawWindow::onStartButton()
{
    setRecording(!m_recording);
    if (m_recording)
        emit startRecording();
    else
        emit stopRecording();
}

void DrawWindow::onCloseButton()
{
    if (m_recording)
        onStartButton();
    m_drawToggleButton->setChecked(false);
    resetStrokes();
    emit hideDrawWindow();
    hide();
}

bool DrawWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &toolBar() && event->type() == QEvent::WindowDeactivate)
        noteKeyboard();
    if (event->type() != QEvent::ToolTip || watched == &toolBar())
        return OverlayFrame::eventFilter(watched, event);
    bartip::show(static_cast<QWidget&>(*watched), m_recording && !m_areTipsLeftOut ? geometry() : QRect());
    return true;
}

void DrawWindow::dragByToolBar(const QPoint& topLeft)
{
    const QRect available = desktopscreens::availableForDrag(*this);
    const int rightmost = available.left() + available.width() - width();
    const int left = std::max(available.left(), std::min(rightmost, topLeft.x()));
    moveOrHide(available.isEmpty() ? pos() : QPoint(left, topLeft.y()));
}

void DrawWindow::moveOrHide(const QPoint& topLeft)
{
    if (m_insideRecorded)
        m_hideWhileDragging.moveTo(topLeft);
    else
        moveWithToolBar(topLeft);
}

void DrawWindow::moveWithToolBar(const QPoint& topLeft)
{
    move(topLeft);
    positionToolBar();
    reportGeometry(true);
}

void DrawWindow::reportGeometry(bool isMoving)
{
    const QRect area = inside().translated(pos());
    const QSize reported = size();
    emit windowGeometryChanged(isMoving, area.topLeft(), area.bottomRight());
    // The receiver may have made it larger by a rounding. One that has cut it has given it a ratio of its own.
    if (reported == m_ratioSize && size().boundedTo(reported) == reported)
        m_ratioSize = size();
}

HitArea DrawWindow::handleAt(const QPoint& position) const
{
    return m_insideRecorded ? HitArea::None : framegeometry::hitAreaAt(position, size());
}

void DrawWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton) {
        close();
        return;
    }
    OverlayFrame::mousePressEvent(event);
}

void DrawWindow::beginDrag()
{
    if (size() != m_ratioSize)
        takeRatio();
}

void DrawWindow::takeRatio()
{
    m_ratio = static_cast<double>(width()) / height();
    m_ratioSize = size();
}

void DrawWindow::setLockRatio(bool lock)
{
    m_lockRatio = lock;
    takeRatio();
}

void DrawWindow::drag(HitArea area, const QRect& start, const QPoint& delta)
{
    const QRect available = desktopscreens::availableForDrag(*this);
    if (available.isEmpty())
        return;
    if (area == HitArea::Move)
        move(framegeometry::moved(start, delta, available, toolBar().height()));
    else
        resizeTo(framegeometry::resized(area, start, delta, minimumSize(), m_lockRatio ? m_ratio : 0.0));
    positionToolBar();
}

void DrawWindow::resizeTo(const QRect& geometry)
{
    setGeometry(geometry);
    if (m_lockRatio)
        m_ratioSize = size();
}

void DrawWindow::endDrag(HitArea area, const QPoint& position)
{
    if (framegeometry::isResize(area) || area == HitArea::Move)
        reportGeometry(false);
    setCursor(framegeometry::cursorOf(hitAreaAt(position)));
}

void DrawWindow::paintMixed(QPainter& painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    if (isDrawMode())
        fillForPointer(painter, QRegion(rect()) - toolBar().geometry().translated(-pos()));
    if (!m_concealed)
        paintBorder(painter);
    if (isDrawMode())
        strokes().paint(painter);
}

/// In logical pixels. Where those are no whole physical ones, two of these are left free between the border and the
/// area: one because the edges of both are rounded, one because the recorded area grows to an even size.
qreal DrawWindow::paintedBorderWidth() const
{
    const qreal ratio = devicePixelRatio();
    return ratio == std::floor(ratio) ? m_borderWidth : (std::floor(m_borderWidth * ratio) - 2) / ratio;
}

int DrawWindow::shapedBorderDepthPx() const
{
    return isCompositing() ? m_borderWidth : static_cast<int>(paintedBorderWidth());
}

void DrawWindow::paintBorder(QPainter& painter) const
{
    const qreal width = paintedBorderWidth();
    const int wholeHalf = m_borderWidth / 2;
    const qreal half = width == m_borderWidth ? wholeHalf : width / 2;
    painter.setPen(QPen(kBorderColor, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(QRectF(rect()).adjusted(half, half, -half, -half));
}
