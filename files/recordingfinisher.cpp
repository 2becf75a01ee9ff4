// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/recordingfinisher.h"

#include "app/sclogger.h"
#include "files/flacfile.h"
#include "files/mp4file.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <atomic>
#include <mutex>

namespace {

/// For the log, which says no more of a path.
QString nameOf(const QString& path)
{
    return QFileInfo(path).fileName();
}

/// False where the file shall be tried again.
bool finishMp4(const QString& path, const std::atomic<bool>& isCancelled)
{
    if (!isFragmentedMp4(path))
        return true;
    QString error;
    switch (makePlainMp4(path, isCancelled, error)) {
    case PlainMp4::Made:
        SCLogger::info(QStringLiteral("The recording has its index now: %1").arg(nameOf(path)));
        return true;
    case PlainMp4::Cancelled:
        return false;
    case PlainMp4::NoSpace:
        SCLogger::warning(QStringLiteral("There is no space to give the recording its index; it plays without: %1")
                              .arg(nameOf(path)));
        return false;
    case PlainMp4::Failed:
        SCLogger::warning(QStringLiteral("The recording could not be given its index (%1); it plays without: %2")
                              .arg(error, nameOf(path)));
        return true;
    }
    Q_UNREACHABLE();
}

bool finishFlac(const QString& path)
{
    QString error;
    if (!writeFlacLength(path, error))
        SCLogger::warning(
            QStringLiteral("The length of the recording could not be written (%1): %2").arg(error, nameOf(path)));
    return true;
}

/// Waits until nobody has written to the file for a moment: an output that has ended by itself may still be closing it.
/// @return false when it was cancelled
bool isClosed(const QString& path, const std::atomic<bool>& isCancelled)
{
    constexpr qint64 kQuietMs = 1000;
    constexpr unsigned long kPollMs = 50;
    while (!isCancelled) {
        const qint64 quietMs = QFileInfo(path).lastModified().msecsTo(QDateTime::currentDateTime());
        // A clock that was set back would make it wait.
        if (quietMs >= kQuietMs || quietMs < 0 || !QFileInfo::exists(path))
            return true;
        QThread::msleep(kPollMs);
    }
    return false;
}

bool finish(const QString& path, const std::atomic<bool>& isCancelled)
{
    const QString ending = QFileInfo(path).suffix();
    if (ending == QLatin1String("mp4"))
        return finishMp4(path, isCancelled);
    return ending != QLatin1String("flac") || finishFlac(path);
}

} // namespace

struct RecordingFinisher::Job
{
    explicit Job(const QString& file) : path(file) {}

    const QString path;
    std::atomic<bool> isCancelled{false};
    /// Locked while the file is used.
    std::mutex inUse;
    /// Used by the thread, and read once that has signalled its end.
    bool isDone = false;
};

RecordingFinisher::RecordingFinisher(QObject* parent) : QObject(parent)
{
    m_thread.setMaxThreadCount(1);
}

RecordingFinisher::~RecordingFinisher()
{
    cancelAll();
    m_thread.waitForDone();
}

void RecordingFinisher::cancelAll()
{
    for (const auto& job : std::as_const(m_jobs))
        job->isCancelled = true;
    m_jobs.clear();
}

void RecordingFinisher::run(Job& job)
{
    const std::lock_guard lock(job.inUse);
    job.isDone = isClosed(job.path, job.isCancelled) && finish(job.path, job.isCancelled);
}

void RecordingFinisher::add(const QString& path)
{
    if (m_jobs.contains(path))
        return;
    const auto job = std::make_shared<Job>(path);
    m_jobs.insert(path, job);
    m_thread.start([this, job] {
        run(*job);
        QMetaObject::invokeMethod(
            this, [this, job] { onDone(job->path, job); }, Qt::QueuedConnection);
    });
}

void RecordingFinisher::onDone(const QString& path, const std::shared_ptr<Job>& job)
{
    // It may have been cancelled, and added again.
    if (m_jobs.value(path) != job)
        return;
    m_jobs.remove(path);
    if (job->isDone)
        emit finished(path);
}

void RecordingFinisher::cancel(const QString& path)
{
    if (const auto job = m_jobs.take(path)) {
        job->isCancelled = true;
        const std::lock_guard lock(job->inUse);
    }
    QFile::remove(unfinishedMp4Path(path));
}
