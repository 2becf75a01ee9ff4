// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/updatenotice.h"

#include "dialogs/dialogwindow.h"
#include "dialogs/scupgradewindow.h"
#include "dialogs/updatecheck.h"
#include "mainwindow/activity.h"
#include "platform/windowing/capture_exclusion.h"
#include "platform/windowing/frame_exclusion.h"

#include <QTimer>

UpdateNotice::UpdateNotice(QWidget* window, const Activity& activity, const Durations& durations)
    : QObject(window)
    , m_window(*window)
    , m_activity(activity)
    , m_retryMs(durations.updateNoticeRetryMs)
    , m_check(new SilentUpdateCheck(this))
{
    connect(m_check, &SilentUpdateCheck::newerVersionFound, this, &UpdateNotice::onNewerVersionFound);
    auto* const timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, m_check, &SilentUpdateCheck::start);
    timer->start(durations.updateCheckDelayMs);
}

void UpdateNotice::drop()
{
    m_dropped = true;
}

void UpdateNotice::onNewerVersionFound(const QJsonObject& document)
{
    m_updateWindow = new SCUpgradeWindow(&m_window, document);
    // Before it is shown: it would be in a recording for a moment.
    m_excluded = platform::setExcludedFromCapture(*m_updateWindow, true);
    platform::setExcludedFromFrames(*m_updateWindow, true);
    showWhenFree();
}

void UpdateNotice::showWhenFree()
{
    if (m_dropped)
        delete m_updateWindow;
    else if (m_activity.mayOpenUnasked(m_excluded))
        dialogwindow::showOver(*m_updateWindow, m_window);
    else
        QTimer::singleShot(m_retryMs, this, &UpdateNotice::showWhenFree);
}
