// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/dialogsuspension.h"

#include "mainwindow/activity.h"
#include "mainwindow/recording/recordingsession.h"
#include "mainwindow/screenshotsession.h"

#include <QApplication>
#include <QDialog>

#include <utility>

DialogSuspension::DialogSuspension(QObject* parent, const Activity& activity, const RecordingSession& recording,
                                   const ScreenshotSession& screenshots)
    : QObject(parent), m_activity(activity), m_screenshots(screenshots)
{
    connect(&recording, &RecordingSession::stateChanged, this, &DialogSuspension::update);
    connect(&screenshots, &ScreenshotSession::activeChanged, this, &DialogSuspension::update);
}

bool DialogSuspension::isAnswerAwaited()
{
    // The program's own dialogs are main windows; who shows a QDialog runs an event loop until it is hidden.
    return qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr;
}

void DialogSuspension::update()
{
    if (!m_activity.isIdle() || m_screenshots.isFraming())
        suspend();
    else if (!m_activity.isClosing())
        restore();
}

void DialogSuspension::suspend()
{
    while (QWidget* const popup = QApplication::activePopupWidget()) {
        if (!popup->close())
            break;
    }
    while (QWidget* const modal = QApplication::activeModalWidget()) {
        if (isAnswerAwaited()) {
            static_cast<QDialog*>(modal)->reject();
        } else {
            m_suspended.prepend(modal);
            modal->hide();
        }
        if (QApplication::activeModalWidget() == modal)
            break;
    }
}

void DialogSuspension::restore()
{
    for (const QPointer<QWidget>& dialog : std::exchange(m_suspended, {})) {
        if (dialog == nullptr)
            continue;
        dialog->show();
        dialog->raise();
        dialog->activateWindow();
    }
}
