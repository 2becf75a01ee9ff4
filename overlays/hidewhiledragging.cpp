// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/hidewhiledragging.h"

#include <utility>

HideWhileDragging::HideWhileDragging(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &HideWhileDragging::onTimeout);
}

void HideWhileDragging::moveTo(const QPoint& position)
{
    m_position = position;
    if (m_state == State::Moving) {
        move(position);
    } else if (m_state == State::Visible) {
        m_state = State::Concealing;
        m_timer.start(kConcealMs);
        emit concealed();
    }
}

void HideWhileDragging::end()
{
    if (m_state == State::Concealing)
        m_isEnding = true;
    else
        emit ended();
}

void HideWhileDragging::cancel()
{
    m_timer.stop();
    m_isEnding = false;
    if (std::exchange(m_state, State::Visible) != State::Visible)
        emit revealed();
}

void HideWhileDragging::onTimeout()
{
    if (m_state == State::Moving) {
        m_state = State::Visible;
        emit revealed();
        return;
    }
    m_state = State::Moving;
    move(m_position);
    if (std::exchange(m_isEnding, false))
        emit ended();
}

void HideWhileDragging::move(const QPoint& position)
{
    m_timer.start(kRestMs);
    emit moved(position);
}
