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

/// Checks for a newer release once and opens the update window when that interrupts nothing. User-interface thread.
class UpdateNotice : public QObject
{
    Q_OBJECT

public:
    /// Starts the delay. Belongs to window.
    UpdateNotice(QWidget* window, const Activity& activity, const Durations& durations = {});

    /// For a user who has checked meanwhile.
    void drop();

private:
    void onNewerVersionFound(const QJsonObject& document);
    void showWhenFree();

    QWidget& m_window;
    const Activity& m_activity;
    int m_retryMs;
    SilentUpdateCheck* m_check;
    QPointer<SCUpgradeWindow> m_updateWindow;
    bool m_excluded = false;
    bool m_dropped = false;
};
