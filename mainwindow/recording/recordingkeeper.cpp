// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingkeeper.h"

#include "app/savefolder.h"
#include "app/settings.h"
#include "mainwindow/recording/recordingpath.h"
#include "mainwindow/recording/recordingsession.h"
#include "platform/files/held_file.h"

#include <QFileInfo>

#include <utility>

namespace {

/// In the default folder, by the same name.
QString rescuedPath(const QString& path)
{
    const QFileInfo file(path);
    const QString base =
        defaultSaveFolder(settingskeys::kRecordingSaveLocation) + QLatin1Char('/') + file.completeBaseName();
    return firstFreePath(base, file.suffix()) + QLatin1Char('.') + file.suffix();
}

} // namespace

RecordingKeeper::RecordingKeeper(RecordingSession& session, Notices& notices, std::function<void()> chooseFolder,
                                 int watchMs)
    : m_session(session), m_notices(notices), m_texts(std::move(chooseFolder)), m_watch(watchMs)
{
    connect(&session, &RecordingSession::starting, this, &RecordingKeeper::onStarting);
    connect(&session, &RecordingSession::fileProduced, this, &RecordingKeeper::onStarted);
    connect(&session, &RecordingSession::ended, this, &RecordingKeeper::onEnded);
    connect(&m_watch, &RecordingWatch::spaceRunsOut, &session, &RecordingSession::endForLackOfSpace);
    connect(&m_watch, &RecordingWatch::fileGone, &session, &RecordingSession::endWithoutFolder);
    connect(&m_rescue, &RecordingRescue::done, this, &RecordingKeeper::onSaved);
}

void RecordingKeeper::onStarting(const QString& path, qint64 bytesPerSecond)
{
    const qint64 freeBytes = RecordingWatch::freeBytes(QFileInfo(path).path());
    const qint64 minutes = diskspace::minutesThatFit(freeBytes, bytesPerSecond);
    if (freeBytes >= 0 && minutes < diskspace::kFewMinutes)
        m_notices.post(m_texts.littleSpace(minutes));
}

void RecordingKeeper::onStarted(const QString& path)
{
    // A start that failed has come to its end before.
    if (m_session.state() == RecordingState::Recording)
        m_watch.start(path);
}

void RecordingKeeper::onEnded(const RecordingOutcome& outcome)
{
    const auto file = m_watch.stop();
    if (outcome.kind == RecordingOutcome::Kind::FolderGone)
        save(outcome.path, file);
    else if (const auto notice = m_texts.ofOutcome(outcome))
        m_notices.post(*notice);
}

void RecordingKeeper::save(const QString& path, std::shared_ptr<platform::HeldFile> file)
{
    const QString present = file ? file->currentPath() : QString();
    const QString target = rescuedPath(path);
    if (!present.isEmpty()) {
        emit fileMoved(path, present);
        emit fileSaved(present);
        m_notices.post(m_texts.moved(present));
    } else if (file && m_rescue.begin(std::move(file), target)) {
        emit fileMoved(path, target);
    } else {
        m_notices.post(m_texts.lost());
    }
}

void RecordingKeeper::onSaved(const QString& path, bool isWhole)
{
    emit fileSaved(path);
    m_notices.post(isWhole ? m_texts.saved(path) : m_texts.lost());
}
