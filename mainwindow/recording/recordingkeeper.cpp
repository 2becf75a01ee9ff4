// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingkeeper.h"

#include "app/savefolder.h"
#include "app/settings.h"
#include "mainwindow/recording/recordingpath.h"
#include "mainwindow/recording/recordingsession.h"
#include "platform/files/held_file.h"
#include "platform/windowing/display_choice.h"

#include <QFileInfo>

#include <utility>

namespace {

/// In a folder, by the same name.
QString freePathIn(const QString& folder, const QString& path)
{
    const QFileInfo file(path);
    return firstFreePath(folder + QLatin1Char('/') + file.completeBaseName(), file.suffix()) + QLatin1Char('.') +
           file.suffix();
}

} // namespace

RecordingKeeper::RecordingKeeper(RecordingSession& session, Notices& notices, std::function<QString()> chooseFolder,
                                 int watchMs)
    : m_session(session)
    , m_notices(notices)
    , m_chooseFolder(std::move(chooseFolder))
    , m_texts(m_chooseFolder)
    , m_watch(watchMs)
{
    connect(&session, &RecordingSession::starting, this, &RecordingKeeper::onStarting);
    connect(&session, &RecordingSession::fileProduced, this, &RecordingKeeper::onStarted);
    connect(&session, &RecordingSession::ended, this, &RecordingKeeper::onEnded);
    connect(&m_watch, &RecordingWatch::spaceRunsOut, &session, &RecordingSession::endForLackOfSpace);
    connect(&m_watch, &RecordingWatch::fileGone, &session, &RecordingSession::endWithoutFolder);
    connect(&m_rescue, &RecordingRescue::done, this, &RecordingKeeper::onCopied);
    // Queued: at the start of the program nothing shows notices yet.
    if (platform::isWaylandSession())
        QMetaObject::invokeMethod(
            this, [this] { m_notices.post(m_texts.windowsMissing()); }, Qt::QueuedConnection);
}

void RecordingKeeper::onStarting(const QString& path, qint64 bytesPerSecond)
{
    const qint64 freeBytes = freeBytesIn(QFileInfo(path).path());
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
    // Whatever has ended the recording, its file may have gone since the last look, or be back.
    if (file && !file->isInPlace())
        save(outcome.path, file);
    else if (const auto notice = m_texts.ofOutcome(outcome))
        m_notices.post(*notice);
}

void RecordingKeeper::save(const QString& path, const std::shared_ptr<platform::HeldFile>& file)
{
    if (const QString present = file->currentPath(); !present.isEmpty()) {
        emit fileMoved(path, present);
        emit fileSaved(present);
        m_notices.post(m_texts.moved(present));
    } else if (file->isHeld()) {
        beginCopy({file, path}, defaultSaveFolder(settingskeys::kRecordingSaveLocation));
    } else {
        m_notices.post(m_texts.lost());
    }
}

void RecordingKeeper::beginCopy(const Copy& copy, const QString& folder)
{
    const QString target = freePathIn(folder, copy.listedPath);
    if (m_rescue.begin(copy.file, target)) {
        m_copies.insert(target, copy);
        emit fileMoved(copy.listedPath, target);
    } else {
        reportLoss(copy);
    }
}

void RecordingKeeper::onCopied(const QString& target, bool isWhole)
{
    Copy copy = m_copies.take(target);
    // The original may come back with its disk.
    const bool isOriginalKept = !isWhole && (!QFileInfo::exists(target) || !copy.file->isDeleted());
    emit fileSaved(target);
    if (isOriginalKept) {
        emit fileMoved(target, copy.listedPath);
        emit fileSaved(copy.listedPath);
    } else {
        copy.listedPath = target;
    }
    if (isWhole)
        m_notices.post(copy.isChosen ? m_texts.savedAsChosen(target) : m_texts.saved(target));
    else
        reportLoss(copy);
}

/// The notice's action has the file: what was recorded is there as long as the notice is.
void RecordingKeeper::reportLoss(const Copy& copy)
{
    Notice notice = m_texts.lost();
    notice.action = [this, copy] {
        if (const QString folder = m_chooseFolder(); folder.isEmpty())
            reportLoss(copy);
        else
            beginCopy({copy.file, copy.listedPath, true}, folder);
    };
    m_notices.post(notice);
}
