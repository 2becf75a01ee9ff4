// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/notices/notices.h"

#include <QRect>
#include <QWidget>

class NoticeBar;

/// The notices of a running recording, beside the floating bar and, like it, in no frame. Shown only where that leaves
/// it out of the recorded area. Never takes the keyboard focus. Logical pixels of the desktop. User-interface thread.
class FloatingNotice : public QWidget
{
    Q_OBJECT

public:
    explicit FloatingNotice(const Durations& durations);

    /// Its action is left to the main window, whose line shows the notice afterwards.
    void add(const Notice& notice);
    void clear();

    /// @param recorded empty where neither system nor recorder has the window in the video
    void placeBeside(const QRect& bar, const QRect& recorded);

    /// Not painted, whether shown or not.
    void setConcealed(bool concealed);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void place();
    void fit();

    NoticeBar* m_line;
    QRect m_bar;
    QRect m_recorded;
};
