// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/durations.h"

#include <QObject>
#include <QPointer>

class Activity;
class QJsonObject;
class QWidget;
class SCUpgradeWindow;
class SilentUpdateCheck;

/// Looks for a newer release once, some seconds after the start, and opens the update window over the main window when
/// that does not interrupt the user. User-interface thread.
class UpdateNotice : public QObject
{
    Q_OBJECT

public:
    /// Starts the delay. Belongs to window.
    UpdateNotice(QWidget* window, const Activity& activity, const Durations& durations = {});
    ~UpdateNotice() override;

    /// Shows nothing any more: the user has checked meanwhile.
    void drop();

private:
    void onNewerVersionFound(const QJsonObject& document);
    void showWhenFree();

    QWidget& m_window;
    const Activity& m_activity;
    int m_retryMs;
    SilentUpdateCheck* m_check;
    /// Shown as soon as it may be.
    QPointer<SCUpgradeWindow> m_updateWindow;
    bool m_excluded = false;
    bool m_dropped = false;
};
