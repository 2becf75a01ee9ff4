// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/notices/notices.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>

class QTimer;

/// Notices that are shown one after the other, each for a time that passes only while it is said to. User-interface
/// thread.
class NoticeQueue : public QObject
{
    Q_OBJECT

public:
    NoticeQueue(const Durations& durations, QObject* parent);

    /// A text that is shown, or waits, keeps its turn and gets the new action.
    /// @return false for such a text, unless the last true for it is longer ago than any notice is shown
    bool add(const Notice& notice);

    /// Null without one.
    const Notice* current() const { return m_entries.isEmpty() ? nullptr : &m_entries.constFirst().notice; }

    /// Removes what is of no use any more.
    void dropWhatTheRecordingHad();

    /// False at first. A time that was interrupted begins again.
    void setTimePasses(bool passes);

    void clear();

public slots:
    void next();

signals:
    void currentChanged();

private:
    struct Entry
    {
        Notice notice;
        QElapsedTimer sinceReported;
    };

    void insert(const Notice& notice);
    bool renew(Entry& entry, const Notice& notice);
    void onChanged();
    void startTime();

    Durations m_durations;
    QList<Entry> m_entries;
    QTimer* m_timer;
    bool m_timePasses = false;
};
