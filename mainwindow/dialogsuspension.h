// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class Activity;
class RecordingSession;
class ScreenshotSession;

/// Hides open menus and the dialogs over the main window while a recording or a screenshot is under way, which they
/// would block and be seen in, and brings the dialogs back as they were. Messages, questions and the choice of a
/// folder, for whose answer the program waits, are cancelled. User-interface thread.
class DialogSuspension : public QObject
{
    Q_OBJECT

public:
    /// All else must outlive this object.
    DialogSuspension(QObject* parent, const Activity& activity, const RecordingSession& recording,
                     const ScreenshotSession& screenshots);

    /// A dialog is open for whose answer its opener waits: a message, a folder's choice.
    static bool isAnswerAwaited();

private:
    void update();
    void suspend();
    void restore();

    const Activity& m_activity;
    const ScreenshotSession& m_screenshots;
    QList<QPointer<QWidget>> m_suspended;
};
