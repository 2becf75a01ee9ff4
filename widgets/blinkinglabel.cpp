// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/blinkinglabel.h"

#include <QStyle>
#include <QTimerEvent>

BlinkingLabel::BlinkingLabel(const QString& text, QWidget* parent, int halfPeriodMs)
    : QLabel(text, parent), m_halfPeriodMs(halfPeriodMs)
{}

void BlinkingLabel::setBlinking(bool blinking)
{
    const bool isAnimated = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (!blinking || !isAnimated)
        m_timer.stop();
    else if (!m_timer.isActive())
        m_timer.start(m_halfPeriodMs, this);
    m_isTextShown = true;
    update();
}

void BlinkingLabel::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QLabel::timerEvent(event);
        return;
    }
    m_isTextShown = !m_isTextShown;
    update();
}

/// The text stays for those who do not look at it.
void BlinkingLabel::paintEvent(QPaintEvent* event)
{
    if (m_isTextShown)
        QLabel::paintEvent(event);
}
