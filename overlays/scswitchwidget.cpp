// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/scswitchwidget.h"

#include "widgets/accessibletoggle.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>

#include <algorithm>

namespace {

constexpr int kAnimationMs = 150;
constexpr int kLargestKnobPx = 10;
/// Of the knob's diameter.
constexpr double kTrackHeight = 0.8;
/// Room left of the track, and as much at its right.
constexpr int kMarginPx = 2;

int blended(int on, int off, double position)
{
    return static_cast<int>(on * position + off * (1.0 - position));
}

QColor blended(const QColor& on, const QColor& off, double position)
{
    return {blended(on.red(), off.red(), position), blended(on.green(), off.green(), position),
            blended(on.blue(), off.blue(), position)};
}

} // namespace

SCSwitchWidget::SCSwitchWidget(QWidget* parent)
    : QWidget(parent), m_animation(new QPropertyAnimation(this, "position", this))
{
    m_animation->setDuration(kAnimationMs);
    m_animation->setEasingCurve(QEasingCurve::InOutExpo);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_MouseTracking);
    setFocusPolicy(Qt::StrongFocus);
    registerAccessibleToggle("SCSwitchWidget", QAccessible::CheckBox, "checked");
}

SCSwitchWidget::~SCSwitchWidget() = default;

void SCSwitchWidget::setChecked(bool checked)
{
    if (checked != m_checked)
        toggle();
}

void SCSwitchWidget::toggle()
{
    m_checked = !m_checked;
    // From where the knob is: a change in mid-animation turns round smoothly.
    m_animation->stop();
    m_animation->setStartValue(m_position);
    m_animation->setEndValue(m_checked ? 1.0 : 0.0);
    m_animation->start();
    emit checkedChanged(m_checked);
    update();
    announceToggled(*this);
}

void SCSwitchWidget::setPosition(double position)
{
    if (position == m_position)
        return;
    m_position = position;
    update();
}

void SCSwitchWidget::setActiveColor(const QColor& color)
{
    if (color == m_activeColor)
        return;
    m_activeColor = color;
    update();
}

void SCSwitchWidget::setInactiveColor(const QColor& color)
{
    if (color == m_inactiveColor)
        return;
    m_inactiveColor = color;
    update();
}

QSize SCSwitchWidget::sizeHint() const
{
    return {25, 12};
}

void SCSwitchWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat())
        toggle();
    else
        QWidget::keyPressEvent(event);
}

void SCSwitchWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        event->accept();
    else
        QWidget::mousePressEvent(event);
}

void SCSwitchWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    // Also outside the switch.
    toggle();
    event->accept();
}

void SCSwitchWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const int diameter = std::min(height(), kLargestKnobPx);
    paintTrack(painter, static_cast<int>(diameter * kTrackHeight));
    paintKnob(painter, diameter);
}

void SCSwitchWidget::paintTrack(QPainter& painter, int heightPx) const
{
    painter.setBrush(blended(m_activeColor, m_inactiveColor, m_position));
    const QRect track(kMarginPx, (height() - heightPx) / 2, width() - 2 * kMarginPx, heightPx);
    const int radius = heightPx / 2;
    painter.drawRoundedRect(track, radius, radius);
}

void SCSwitchWidget::paintKnob(QPainter& painter, int diameterPx) const
{
    const int x = static_cast<int>((width() - 2 * kMarginPx - diameterPx) * m_position + kMarginPx);
    const int y = std::max(0, std::min((height() - diameterPx) / 2, height() - diameterPx));
    painter.setBrush(blended(QColor(0xFF, 0xFF, 0xFF), QColor(0xAA, 0xAA, 0xAA), m_position));
    painter.drawEllipse(x, y, diameterPx, diameterPx);
}

void SCSwitchWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    update();
}
