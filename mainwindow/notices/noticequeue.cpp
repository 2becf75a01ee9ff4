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
    const auto hasText = [&notice](const Entry& entry) { return entry.notice.text == notice.text; };
    const auto same = std::find_if(m_entries.begin(), m_entries.end(), hasText);
    if (same != m_entries.end())
        return renew(*same, notice);
    insert(notice);
    return true;
}

void NoticeQueue::insert(const Notice& notice)
{
    const auto goesFirst = [](const Entry& entry) { return entry.notice.turn == NoticeTurn::First; };
    const auto position = notice.turn == NoticeTurn::First
                              ? std::find_if_not(m_entries.begin(), m_entries.end(), goesFirst)
                              : m_entries.end();
    const bool isCurrent = position == m_entries.begin();
    m_entries.insert(position, {notice, {}})->sinceReported.start();
    if (isCurrent)
        onChanged();
}

bool NoticeQueue::renew(Entry& entry, const Notice& notice)
{
    const bool looksTheSame = entry.notice.actionText == notice.actionText;
    entry.notice.actionText = notice.actionText;
    entry.notice.action = notice.action;
    const bool isReported = !entry.sinceReported.hasExpired(m_durations.noticeWithActionMs);
    if (!isReported)
        entry.sinceReported.restart();
    if (!looksTheSame && &entry == &m_entries.constFirst())
        onChanged();
    return !isReported;
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
    if (m_timePasses && !m_entries.isEmpty())
        m_timer->start(current()->actionText.isEmpty() ? m_durations.noticeMs : m_durations.noticeWithActionMs);
}

void NoticeQueue::onChanged()
{
    startTime();
    emit currentChanged();
}

void NoticeQueue::next()
{
    if (m_entries.isEmpty())
        return;
    m_entries.removeFirst();
    onChanged();
}

void NoticeQueue::clear()
{
    if (m_entries.isEmpty())
        return;
    m_entries.clear();
    onChanged();
}

void NoticeQueue::dropWhatTheRecordingHad()
{
    const auto isDropped = [](const Entry& entry) { return entry.notice.turn == NoticeTurn::UntilRecordingEnds; };
    const bool isCurrentDropped = !m_entries.isEmpty() && isDropped(m_entries.constFirst());
    m_entries.removeIf(isDropped);
    if (isCurrentDropped)
        onChanged();
}
