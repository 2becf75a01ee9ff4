// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/areaselector.h"

#include "platform/windowing/overlay_window.h"

#include <QCursor>
#include <QDebug>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>

#include <utility>

#include <algorithm>

namespace {

constexpr QColor kVeil(0, 0, 0, 100);
constexpr QColor kSelection(255, 255, 255, 50);
constexpr int kOutlinePx = 2;

/// Which way an arrow key moves the pointer, in logical pixels.
QPoint stepOf(const QKeyEvent& event)
{
    constexpr int kStepPx = 10;
    const int length = event.modifiers().testFlag(Qt::ShiftModifier) ? 1 : kStepPx;
    switch (event.key()) {
    case Qt::Key_Left:
        return {-length, 0};
    case Qt::Key_Right:
        return {length, 0};
    case Qt::Key_Up:
        return {0, -length};
    case Qt::Key_Down:
        return {0, length};
    default:
        return {};
    }
}

bool isMark(int key)
{
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
}

QPixmap grabBelow(QScreen& screen, const QWidget& window)
{
    const QRect geometry = window.geometry().translated(-screen.geometry().topLeft());
    return screen.grabWindow(0, geometry.x(), geometry.y(), geometry.width(), geometry.height());
}

} // namespace

AreaSelector::AreaSelector(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    if (const QScreen* const primary = QGuiApplication::primaryScreen())
        setGeometry(primary->geometry());
    setCursor(Qt::CrossCursor);
    // A drag that Escape has cancelled goes on without a button.
    setMouseTracking(true);
}

AreaSelector::~AreaSelector() = default;

/// Both corners are inside it, whichever way the drag goes; QRect::normalized() would leave them out of one that goes
/// up or to the left.
QRect AreaSelector::dragged() const
{
    return QRect(m_startPoint, QSize(1, 1)) | QRect(m_currentPoint, QSize(1, 1));
}

void AreaSelector::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setCursor(Qt::CrossCursor);
    beginAt(event->position().toPoint());
}

void AreaSelector::beginAt(const QPoint& position)
{
    m_selecting = true;
    m_isMarked = false;
    m_startPoint = m_currentPoint = position;
    showSelection();
}

void AreaSelector::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_selecting)
        return;
    m_currentPoint = event->position().toPoint();
    showSelection();
}

void AreaSelector::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && m_selecting)
        finish();
}

void AreaSelector::finish()
{
    m_selecting = false;
    m_isMarked = false;
    m_selectedRect = dragged();
    qDebug() << "Selected Area - X:" << m_selectedRect.x() << "Y:" << m_selectedRect.y()
             << "Width:" << m_selectedRect.width() << "Height:" << m_selectedRect.height();
    QGuiApplication::restoreOverrideCursor();
    showSelection();
    emit areaSelected(m_selectedRect);
}

void AreaSelector::showSelection()
{
    update();
    for (AreaSelector* const neighbour : m_neighbours) {
        const QPoint offset = geometry().topLeft() - neighbour->geometry().topLeft();
        neighbour->showNeighboursSelection(m_selecting ? dragged().translated(offset) : QRect());
    }
}

void AreaSelector::showNeighboursSelection(const QRect& selection)
{
    // A drag that Escape has cancelled goes on until the next one begins.
    m_selecting = m_selecting && selection.isNull();
    m_neighboursSelection = selection;
    update();
}

void AreaSelector::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (const QPoint step = stepOf(*event); !step.isNull())
        movePointer(step);
    else if (isMark(key) && !event->isAutoRepeat())
        markCorner();
    else if (key == Qt::Key_Escape)
        cancel();
    QWidget::keyPressEvent(event);
}

/// The pointer may be on a neighbour: the corners are this selector's all the same.
void AreaSelector::movePointer(const QPoint& step)
{
    const QPoint position = QCursor::pos() + step;
    QCursor::setPos(m_isMarked ? withinReach(position) : position);
    if (!m_isMarked)
        return;
    m_currentPoint = pointer();
    showSelection();
}

QPoint AreaSelector::pointer() const
{
    return mapFromGlobal(withinReach(QCursor::pos()));
}

/// The nearest position on this selector, unless a neighbour has it.
QPoint AreaSelector::withinReach(const QPoint& position) const
{
    const auto has = [&position](const AreaSelector* neighbour) { return neighbour->geometry().contains(position); };
    const QRect own = geometry();
    if (std::ranges::any_of(m_neighbours, has))
        return position;
    return {std::clamp(position.x(), own.left(), own.right()), std::clamp(position.y(), own.top(), own.bottom())};
}

void AreaSelector::markCorner()
{
    if (m_isMarked) {
        m_currentPoint = pointer();
        finish();
        return;
    }
    beginAt(pointer());
    m_isMarked = true;
}

void AreaSelector::cancel()
{
    QGuiApplication::restoreOverrideCursor();
    hide();
}

void AreaSelector::hideEvent(QHideEvent* event)
{
    // No button is held that could end it.
    m_selecting = m_selecting && !std::exchange(m_isMarked, false);
    QWidget::hideEvent(event);
}

/// Comes before the window is on the screen.
void AreaSelector::showEvent(QShowEvent* event)
{
    QScreen* const shownOn = screen();
    m_neighboursSelection = {};
    m_backdrop = shownOn == nullptr || platform::isCompositing() ? QPixmap() : grabBelow(*shownOn, *this);
    QWidget::showEvent(event);
}

void AreaSelector::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    if (!m_backdrop.isNull())
        painter.drawPixmap(0, 0, m_backdrop);
    painter.fillRect(rect(), kVeil);
    if (m_selecting)
        paintSelection(painter, dragged());
    else if (!m_neighboursSelection.isNull())
        paintSelection(painter, m_neighboursSelection);
}

void AreaSelector::paintSelection(QPainter& painter, const QRect& selection)
{
    painter.fillRect(selection, kSelection);
    painter.setPen(QPen(Qt::white, kOutlinePx, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawRect(selection);
    painter.drawText(selection.center(), QStringLiteral("%1 x %2").arg(selection.width()).arg(selection.height()));
}
