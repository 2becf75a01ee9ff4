// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/notices/notices.h"
#include "mainwindow/recording/recordingoutcome.h"

#include <QCoreApplication>

#include <functional>
#include <optional>

/// What the user is told about recordings.
class RecordingNotices
{
    Q_DECLARE_TR_FUNCTIONS(RecordingNotices)

public:
    /// @param chooseFolder lets the user choose another save folder
    explicit RecordingNotices(std::function<void()> chooseFolder);

    /// Nothing where there is nothing to tell. FolderGone: it was away for a while only. Else see moved(), saved() and
    /// lost().
    std::optional<Notice> ofOutcome(const RecordingOutcome& outcome) const;

    /// In a Wayland session, at the start of the program.
    Notice windowsMissing() const;

    /// Before a start.
    Notice littleSpace(qint64 minutes) const;

    // The folder has gone.
    Notice moved(const QString& path) const;
    Notice saved(const QString& path) const;
    Notice savedAsChosen(const QString& path) const;
    Notice lost() const;

private:
    static QString reason(StopCause cause);
    static Notice asOutcome(Notice notice);
    static Notice withFolder(const QString& text, const QString& path);
    Notice withChoice(const QString& text) const;
    Notice ofFailure(const QString& frame, StopCause cause) const;

    std::function<void()> m_chooseFolder;
};
