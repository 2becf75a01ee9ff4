// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/recordingrescue.h"
#include "mainwindow/recording/recordingnotices.h"
#include "mainwindow/recording/recordingwatch.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <memory>

class RecordingSession;

/// Keeps recordings from being lost: ends one before its disk is full or when its folder goes, saves the file then,
/// and posts what the user has to know. User-interface thread.
class RecordingKeeper : public QObject
{
    Q_OBJECT

public:
    /// @param chooseFolder lets the user choose another save folder; empty where none was chosen
    /// @param watchMs between two looks at file and disk
    RecordingKeeper(RecordingSession& session, Notices& notices, std::function<QString()> chooseFolder, int watchMs);

signals:
    /// The file is under another path now, and is written to until fileSaved().
    void fileMoved(const QString& from, const QString& to);
    void fileSaved(const QString& path);

private:
    struct Copy
    {
        std::shared_ptr<platform::HeldFile> file;
        /// Where the list of files has it.
        QString listedPath;
        /// The user has chosen its folder.
        bool isChosen = false;
    };

    void onStarting(const QString& path, qint64 bytesPerSecond);
    void onStarted(const QString& path);
    void onEnded(const RecordingOutcome& outcome);
    void save(const QString& path, const std::shared_ptr<platform::HeldFile>& file);
    void beginCopy(const Copy& copy, const QString& folder);
    void onCopied(const QString& target, bool isWhole);
    void reportLoss(const Copy& copy);

    RecordingSession& m_session;
    Notices& m_notices;
    const std::function<QString()> m_chooseFolder;
    const RecordingNotices m_texts;
    RecordingWatch m_watch;
    /// Under way, by their targets.
    QHash<QString, Copy> m_copies;
    RecordingRescue m_rescue;
};
