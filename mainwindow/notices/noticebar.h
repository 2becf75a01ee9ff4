// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"
#include "mainwindow/notices/notices.h"

#include <QFrame>

class NoticeQueue;
class QLabel;
class QPushButton;

/// The line that shows one notice after the other, hidden without one. A click on it, Escape and its close button go on
/// to the next one; so does time, which does not pass while the window is minimised or blocked by a dialog, the pointer
/// is over the line, or one of its buttons has the keyboard. An alert to assistive technology. User-interface thread.
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    /// The parent, whose window stays the same, gives it its position.
    NoticeBar(QWidget* parent, const Durations& durations);

    /// As NoticeQueue has them.
    bool add(const Notice& notice);
    void clear();
    void dropWhatTheRecordingHad();
    bool hasNotice() const;

    int heightForWidth(int widthPx) const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// Another notice is shown, or none.
    void changed();

protected:
    void changeEvent(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void makeParts();
    void retranslate();
    void showCurrent();
    void act();
    void setPointed(bool pointed);
    bool isSeen() const;
    void updateTime();

    NoticeQueue* m_queue;
    QLabel* m_text;
    QPushButton* m_action;
    QPushButton* m_close;
    bool m_isBlocked = false;
    bool m_isPointed = false;
    bool m_isAnnounced = false;
};
