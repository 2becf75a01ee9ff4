// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/noticequeue.h"

#include <QTimer>

#include <algorithm>

NoticeQueue::NoticeQueue(const Durations& durations, QObject* parent)
    : QObject(parent), m_durations(durations), m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &NoticeQueue::next);
}

bool NoticeQueue::add(const Notice& notice)
{
    const auto hasText = [&notice](const Notice& other) { return other.text == notice.text; };
    if (std::any_of(m_notices.cbegin(), m_notices.cend(), hasText))
        return false;
    m_notices.append(notice);
    if (m_notices.size() == 1) {
        startTime();
        emit currentChanged();
    }
    return true;
}

void NoticeQueue::setTimePasses(bool passes)
{
    if (passes == m_timePasses)
        return;
    m_timePasses = passes;
    startTime();
}

void NoticeQueue::startTime()
{
    m_timer->stop();
    if (m_timePasses && !m_notices.isEmpty())
        m_timer->start(current()->actionText.isEmpty() ? m_durations.noticeMs : m_durations.noticeWithActionMs);
}

void NoticeQueue::next()
{
    if (m_notices.isEmpty())
        return;
    m_notices.removeFirst();
    startTime();
    emit currentChanged();
}

void NoticeQueue::clear()
{
    if (m_notices.isEmpty())
        return;
    m_notices.clear();
    startTime();
    emit currentChanged();
}
