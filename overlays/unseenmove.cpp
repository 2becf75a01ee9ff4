#include "overlays/unseenmove.h"

#include <utility>

UnseenMove::UnseenMove(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &UnseenMove::onTimeout);
}

void UnseenMove::moveTo(const QPoint& pointer)
{
    m_pointer = pointer;
    if (m_state == State::Moving) {
        go(pointer);
    } else if (m_state == State::Seen) {
        m_state = State::Concealing;
        m_timer.start(kConcealMs);
        emit concealed();
    }
}

void UnseenMove::end()
{
    if (m_state == State::Concealing)
        m_isEnding = true;
    else
        emit ended();
}

void UnseenMove::giveUp()
{
    m_timer.stop();
    m_isEnding = false;
    if (std::exchange(m_state, State::Seen) != State::Seen)
        emit revealed();
}

void UnseenMove::onTimeout()
{
    if (m_state == State::Moving) {
        m_state = State::Seen;
        emit revealed();
        return;
    }
    m_state = State::Moving;
    go(m_pointer);
    if (std::exchange(m_isEnding, false))
        emit ended();
}

void UnseenMove::go(const QPoint& pointer)
{
    m_timer.start(kRestMs);
    emit moved(pointer);
}
