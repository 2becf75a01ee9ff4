// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/notices/notices.h"

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

    /// @return false where the same text is shown, or waits
    bool add(const Notice& notice);

    /// Null without one.
    const Notice* current() const { return m_notices.isEmpty() ? nullptr : &m_notices.constFirst(); }

    /// False at first. A time that was interrupted begins again.
    void setTimePasses(bool passes);

    void clear();

public slots:
    void next();

signals:
    void currentChanged();

private:
    void startTime();

    Durations m_durations;
    QList<Notice> m_notices;
    QTimer* m_timer;
    bool m_timePasses = false;
};
