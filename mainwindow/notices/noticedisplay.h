// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/notices/notices.h"

#include <QObject>

class Activity;
enum class RecordingState;
class NoticeBar;
class RecordingView;
class QWidget;
struct Durations;

namespace platform {
class DesktopNotifier;
}

/// Where notices are shown: always at the top of the main window's pages, over them, as soon as that is seen; besides,
/// while a recording runs, beside its floating bar, and while nothing is recorded and the window is minimised, in a
/// message of the desktop, which brings the window back when it is clicked and goes when a recording begins.
/// User-interface thread.
class NoticeDisplay : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the window of the pages; all else must outlive this object.
    NoticeDisplay(const Notices& notices, QWidget& pages, RecordingView& view, const Activity& activity,
                  const Durations& durations);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show(const Notice& notice);
    void showElsewhere(const Notice& notice, bool isNew);
    void onRecordingState(RecordingState state);
    void onMessageClicked();
    void place();

    QWidget& m_pages;
    RecordingView& m_view;
    const Activity& m_activity;
    NoticeBar* m_bar;
    platform::DesktopNotifier* m_desktop;
};
