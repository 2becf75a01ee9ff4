// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/overlayframe.h"

#include "platform/windowing/overlay_window.h"
#include "widgets/arrowkeys.h"
#include "widgets/icons.h"
#include "widgets/windowmask.h"

#include <QCursor>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

#include <utility>

using framegeometry::HitArea;

namespace {

constexpr QSize kButtonSize(30, 30);
constexpr char kIconProperty[] = "iconName";
/// Invisible, but enough for the system to give the window the pointer.
constexpr QColor kNearlyTransparent(0, 0, 0, 1);

} // namespace

OverlayFrame::OverlayFrame(const QSize& minimumSize, const PenStrokes& strokes, QWidget* parent)
    : QWidget(parent)
    , m_strokes(strokes)
    , m_toolBar(std::make_unique<QWidget>(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint))
    , m_undoButton(makeButton(QStringLiteral("undoButton"), QStringLiteral("undo")))
    , m_redoButton(makeButton(QStringLiteral("redoButton"), QStringLiteral("redo")))
    , m_opening(*this)
{
    setMinimumSize(minimumSize);
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowFlags(Qt::SubWindow | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_StaticContents);
    setMouseTracking(true);
    // Closing the frame must not end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    m_toolBar->setObjectName(QStringLiteral("buttonBackground"));
    m_toolBar->setAttribute(Qt::WA_AlwaysShowToolTips);
    m_toolBar->installEventFilter(this);
    auto* const layout = new QHBoxLayout(m_toolBar.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    connect(m_undoButton, &QPushButton::clicked, this, &OverlayFrame::undoStroke);
    connect(m_redoButton, &QPushButton::clicked, this, &OverlayFrame::redoStroke);
    OverlayFrame::drawingChanged();
}

OverlayFrame::~OverlayFrame() = default;

void OverlayFrame::positionAt(const QRect& geometry)
{
    // Qt 6.8 shows a window on another screen than it was made for in the size that it was made with.
    if (!isVisible())
        setScreen(QGuiApplication::screenAt(geometry.center()));
    setGeometry(geometry);
}

QHBoxLayout& OverlayFrame::toolBarLayout() const
{
    return static_cast<QHBoxLayout&>(*m_toolBar->layout());
}

QPushButton* OverlayFrame::addButton(const QString& name, const QString& icon)
{
    QPushButton* const button = makeButton(name, icon);
    toolBarLayout().addWidget(button);
    return button;
}

QPushButton* OverlayFrame::makeButton(const QString& name, const QString& icon)
{
    auto* const button = new QPushButton(m_toolBar.get());
    button->setObjectName(name);
    button->setFixedSize(kButtonSize);
    button->setAttribute(Qt::WA_Hover);
    button->setProperty(kIconProperty, icon);
    button->installEventFilter(this);
    // A click leaves the keyboard where it is.
    button->setFocusPolicy(Qt::TabFocus);
    showHoverIcon(*button, false);
    return button;
}

void OverlayFrame::describe(QPushButton& button, const QString& text)
{
    button.setToolTip(text);
    button.setAccessibleName(text);
}

void OverlayFrame::retranslate()
{
    describe(*m_undoButton, tr("Undo"));
    describe(*m_redoButton, tr("Redo"));
}

void OverlayFrame::drawingChanged()
{
    m_undoButton->setEnabled(m_drawMode && m_strokes.canUndo());
    m_redoButton->setEnabled(m_drawMode && m_strokes.canRedo());
}

void OverlayFrame::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void OverlayFrame::setToolBarVisible(bool visible)
{
    // A tool tip is a child of its button.
    const QList<QWidget*> parts = m_toolBar->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* const part : parts)
        part->setVisible(visible);
    m_toolBar->setVisible(visible);
}

void OverlayFrame::hide()
{
    QWidget::hide();
    setToolBarVisible(false);
}

void OverlayFrame::show()
{
    QWidget::show();
    setToolBarVisible(true);
    positionToolBar();
}

void OverlayFrame::raise()
{
    QWidget::raise();
    m_toolBar->raise();
}

void OverlayFrame::closeEvent(QCloseEvent* event)
{
    setToolBarVisible(false);
    QWidget::closeEvent(event);
}

void OverlayFrame::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    updateCompositing();
    updateOpening();
}

void OverlayFrame::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    // The release goes elsewhere.
    m_pressed = false;
    m_resizeRegion = HitArea::None;
    m_toolBarDragging = false;
    updateOpening();
}

void OverlayFrame::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    positionToolBar();
}

void OverlayFrame::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    positionToolBar();
    updateOpening();
    // With static contents only the new part is painted, and the border would stay where it was.
    update();
}

bool OverlayFrame::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
        showHoverIcon(*watched, event->type() == QEvent::Enter);
        return false;
    case QEvent::MouseButtonPress:
        // On Windows a press on the bar takes the keyboard from the frame, and its first button would get the focus.
        m_toolBar->setFocus(Qt::MouseFocusReason);
        [[fallthrough]];
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return watched == m_toolBar.get() && filterToolBar(static_cast<const QMouseEvent&>(*event));
    case QEvent::KeyPress:
        return filterKey(*watched, static_cast<QKeyEvent&>(*event));
    default:
        return false;
    }
}

void OverlayFrame::showHoverIcon(QObject& watched, bool hovered)
{
    auto* const button = qobject_cast<QPushButton*>(&watched);
    const QString icon = watched.property(kIconProperty).toString();
    if (button != nullptr && !button->isChecked() && !icon.isEmpty())
        button->setIcon(icons::named(icon, hovered ? icons::Tone::Light : icons::Tone::Normal));
}

/// What the bar does not need is the frame's.
bool OverlayFrame::filterKey(QObject& watched, QKeyEvent& event)
{
    auto* const button = qobject_cast<QPushButton*>(&watched);
    const bool isEnter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (button != nullptr && isEnter && !event.isAutoRepeat())
        button->click();
    if (button != nullptr)
        return isEnter;
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab)
        return false;
    keyPressEvent(&event);
    return true;
}

bool OverlayFrame::filterToolBar(const QMouseEvent& event)
{
    const QPoint cursor = event.globalPosition().toPoint();
    const bool isLeft = event.button() == Qt::LeftButton;
    if (event.type() == QEvent::MouseButtonPress && isLeft) {
        m_toolBarDragging = true;
        m_dragStartPos = cursor - pos();
    } else if (event.type() == QEvent::MouseMove && m_toolBarDragging) {
        dragByToolBar(cursor - m_dragStartPos);
        return true;
    } else if (event.type() == QEvent::MouseButtonRelease && isLeft && m_toolBarDragging) {
        m_toolBarDragging = false;
        endToolBarDrag();
    }
    return false;
}

void OverlayFrame::setDrawMode(bool on, QPushButton& penButton)
{
    m_drawMode = on;
    penButton.setChecked(on);
    penButton.setIcon(icons::named(QStringLiteral("pen"), on ? icons::Tone::Light : icons::Tone::Normal));
    setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
    positionToolBar();
    updateCompositing();
    updateOpening();
    update();
    drawingChanged();
}

void OverlayFrame::clearStrokes()
{
    m_strokes.clear();
    showStrokes();
}

void OverlayFrame::resetStrokes()
{
    m_strokes.reset();
    showStrokes();
}

void OverlayFrame::forgetHiddenStrokes()
{
    m_strokes.forgetHidden();
    drawingChanged();
}

void OverlayFrame::undoStroke()
{
    m_strokes.undo();
    showStrokes();
}

void OverlayFrame::redoStroke()
{
    m_strokes.redo();
    showStrokes();
}

void OverlayFrame::showStrokes()
{
    updateOpening();
    update();
    drawingChanged();
}

/// From the frame to its tool bar, in which Tab then leads from button to button.
bool OverlayFrame::focusNextPrevChild(bool next)
{
    if (!m_toolBar->isVisible())
        return false;
    const auto neighbour = [next](const QWidget* widget) {
        return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    QWidget* button = neighbour(m_toolBar.get());
    while (button != m_toolBar.get() &&
           (button->focusPolicy() == Qt::NoFocus || !button->isVisible() || !button->isEnabled()))
        button = neighbour(button);
    button->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    m_toolBar->activateWindow();
    return true;
}

void OverlayFrame::moveOrResize(HitArea area, const QPoint& step)
{
    if (isDragged() || !arrowkeys::isInSight(geometry().translated(step)))
        return;
    if (area == HitArea::Move) {
        dragByToolBar(pos() + step);
        endToolBarDrag();
    } else if (framegeometry::isResize(handleAt(rect().bottomRight()))) {
        beginDrag();
        drag(area, geometry(), step);
        endDrag(area, mapFromGlobal(QCursor::pos()));
    }
}

void OverlayFrame::keyPressEvent(QKeyEvent* event)
{
    if (const QPoint step = arrowkeys::stepOf(*event); !step.isNull() && takesArrowKeys()) {
        moveOrResize(arrowkeys::areaOf(*event), step);
        return;
    }
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool isRedo = (event->key() == Qt::Key_Z && modifiers == (Qt::ControlModifier | Qt::ShiftModifier)) ||
                        (event->key() == Qt::Key_Y && modifiers == Qt::ControlModifier);
    const bool isUndo = event->key() == Qt::Key_Z && modifiers == Qt::ControlModifier;
    if (m_drawMode && isUndo)
        undoStroke();
    else if (m_drawMode && isRedo)
        redoStroke();
    else
        QWidget::keyPressEvent(event);
}

HitArea OverlayFrame::hitAreaAt(const QPoint& position) const
{
    return m_drawMode ? HitArea::Drawing : handleAt(position);
}

void OverlayFrame::mousePressEvent(QMouseEvent* event)
{
    QWidget::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    beginDrag();
    m_pressed = true;
    m_dragStartPos = event->globalPosition().toPoint();
    m_dragStartGeometry = geometry();
    m_resizeRegion = hitAreaAt(event->position().toPoint());
    if (m_resizeRegion == HitArea::Drawing) {
        m_strokes.begin(event->position());
        updateCompositing();
        updateOpening();
        drawingChanged();
    }
    update();
}

void OverlayFrame::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pressed || !event->buttons().testFlag(Qt::LeftButton)) {
        setCursor(framegeometry::cursorOf(hitAreaAt(event->position().toPoint())));
    } else if (m_resizeRegion == HitArea::Drawing) {
        extendStroke(event->position());
        return;
    } else if (m_resizeRegion != HitArea::None) {
        drag(m_resizeRegion, m_dragStartGeometry, event->globalPosition().toPoint() - m_dragStartPos);
    }
    QWidget::mouseMoveEvent(event);
}

void OverlayFrame::extendStroke(const QPointF& position)
{
    if (!m_drawMode)
        return;
    const QRect changed = m_strokes.extend(position);
    updateOpening();
    update(changed);
}

void OverlayFrame::finishStroke(const QPointF& position)
{
    m_strokes.finish(position);
    drawingChanged();
}

void OverlayFrame::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressed = false;
        const HitArea area = std::exchange(m_resizeRegion, HitArea::None);
        if (area == HitArea::Drawing && m_drawMode)
            finishStroke(event->position());
        setCursor(m_drawMode ? Qt::CrossCursor : Qt::ArrowCursor);
        endDrag(area, event->position().toPoint());
        updateOpening();
        update();
    }
    QWidget::mouseReleaseEvent(event);
}

void OverlayFrame::updateCompositing()
{
    m_isCompositing = platform::isCompositing();
}

void OverlayFrame::updateOpening()
{
    using Pointer = platform::WindowOpening::Pointer;
    m_opening.update(takesPointer() ? Pointer::IsTaken : Pointer::PassesThrough, m_isCompositing,
                     [this] { return paintedRegion(); });
}

QRect OverlayFrame::inside() const
{
    const int depth = borderDepthPx();
    return rect().adjusted(depth, depth, -depth, -depth);
}

/// What there is to see, as far as whole logical pixels can say.
QRegion OverlayFrame::paintedRegion() const
{
    QRegion painted;
    const int depth = shapedBorderDepthPx();
    if (isBorderVisible())
        painted = QRegion(rect()) - rect().adjusted(depth, depth, -depth, -depth);
    if (m_drawMode)
        painted += m_strokes.region();
    return painted.isEmpty() ? maskOfNothing() : painted;
}

void OverlayFrame::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (m_isCompositing)
        paintMixed(painter);
    else
        paintCut(painter);
}

/// The window has the shape of border and strokes, and pixels that are not fully covered would be black. So it is
/// painted beyond what can be seen.
void OverlayFrame::paintCut(QPainter& painter) const
{
    painter.fillRect(rect().adjusted(-1, -1, 1, 1), isBorderVisible() ? kBorderColor : m_strokes.color());
    if (!m_drawMode)
        return;
    const QRect drawn = inside().adjusted(1, 1, -1, -1);
    painter.fillRect(drawn, m_strokes.color());
    for (const QRect& part : m_strokes.region() - drawn)
        painter.fillRect(part, m_strokes.color());
}

void OverlayFrame::fillForPointer(QPainter& painter, const QRegion& region) const
{
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect& part : region)
        painter.fillRect(part, takesPointer() ? kNearlyTransparent : QColor(Qt::transparent));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}
