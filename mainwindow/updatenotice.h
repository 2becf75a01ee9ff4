#pragma once

#include "mainwindow/durations.h"

#include <QObject>
#include <QPointer>

class Activity;
class QJsonObject;
class QWidget;
class SCUpgradeWindow;
class SilentUpdateCheck;

/// Looks for a newer release once, five seconds after it was made, and shows the update window if there is one. That
/// window is kept out of every capture where the system can, and comes when it does not interrupt the user. Belongs to
/// the main window. User-interface thread.
class UpdateNotice : public QObject
{
    Q_OBJECT

public:
    /// Starts counting. The update window opens over the given one.
    UpdateNotice(QWidget* window, const Activity& activity, const Durations& durations = {});
    ~UpdateNotice() override;

    /// Shows nothing that has not been shown yet: the user has asked, and been told.
    void drop();

private:
    void onNewerVersionFound(const QJsonObject& document);
    void showWhenFree();

    QWidget& m_window;
    const Activity& m_activity;
    int m_retryMs;
    SilentUpdateCheck* m_check;
    /// Made, and not shown before it may be.
    QPointer<SCUpgradeWindow> m_updateWindow;
    bool m_excluded = false;
    bool m_dropped = false;
};
