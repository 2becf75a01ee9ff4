// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filedetailsreader.h"

#include "files/filework.h"
#include "files/medialength.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QThread>
#include <QThreadPool>

#include <utility>

namespace {

using Request = FileDetailsReader::Request;

FileDetails detailsOf(const Request& request, FileWork& work)
{
    FileDetails details;
    const QFileInfo file(request.path);
    details.isMissing = !file.isFile();
    if (details.isMissing)
        return details;
    details.sizeBytes = file.size();
    const bool isSameFile = details.sizeBytes == request.known.sizeBytes;
    if (isSameFile && (!request.isMedia || request.known.durationMs)) {
        details.durationMs = request.known.durationMs;
        return details;
    }
    if (request.isMedia) {
        const MediaLength media = mediaLength(request.path, work);
        details.isUnreadable = media.isUnreadable;
        if (media.length)
            details.durationMs = media.length->count();
    }
    return details;
}

} // namespace

struct FileDetailsReader::Job
{
    explicit Job(const QList<Request>& wanted) : requests(wanted) {}

    const QList<Request> requests;
    FileWork work;
    /// So many of the requests need not be read again. Of the user-interface thread.
    qsizetype done = 0;
};

FileDetailsReader::FileDetailsReader(QObject* parent) : QObject(parent), m_thread(std::make_unique<QThreadPool>())
{
    m_thread->setMaxThreadCount(1);
    m_thread->setThreadPriority(QThread::IdlePriority);
}

FileDetailsReader::~FileDetailsReader()
{
    constexpr int kInterruptLimitMs = 2000;
    cancelAll();
    // The process is about to end, and the thread uses nothing of this object any more.
    if (!m_thread->waitForDone(kInterruptLimitMs))
        (void)m_thread.release();
}

void FileDetailsReader::cancelAll()
{
    for (const auto& job : std::as_const(m_jobs))
        job->work.cancel();
    m_jobs.clear();
}

void FileDetailsReader::cancel(const QStringList& paths)
{
    constexpr int kInterruptLimitMs = 500;
    const QSet<QString> cancelled(paths.begin(), paths.end());
    QList<Request> rest;
    for (const auto& job : std::as_const(m_jobs))
        rest.append(job->requests.sliced(job->done));
    const auto isCancelled = [&cancelled](const Request& request) { return cancelled.contains(request.path); };
    if (rest.removeIf(isCancelled) == 0)
        return;
    cancelAll();
    m_thread->waitForDone(kInterruptLimitMs);
    add(rest);
}

void FileDetailsReader::add(const QList<Request>& requests)
{
    if (requests.isEmpty())
        return;
    m_jobs.append(std::make_shared<Job>(requests));
    m_thread->start([this, job = m_jobs.constLast()] { run(job); });
}

/// On the thread; uses this object only through report().
void FileDetailsReader::run(const std::shared_ptr<Job>& job)
{
    constexpr qint64 kReportMs = 1000;
    QHash<QString, FileDetails> details;
    QElapsedTimer sinceReport;
    sinceReport.start();
    qsizetype done = 0;
    for (const Request& request : job->requests) {
        const FileDetails read = detailsOf(request, job->work);
        if (job->work.isCancelled())
            return;
        ++done;
        if (read != request.known)
            details.insert(request.path, read);
        if (details.isEmpty() || !sinceReport.hasExpired(kReportMs))
            continue;
        report(job, std::exchange(details, {}), done);
        sinceReport.restart();
    }
    report(job, details, done);
}

void FileDetailsReader::report(const std::shared_ptr<Job>& job, const QHash<QString, FileDetails>& details,
                               qsizetype done)
{
    const auto emitRead = [this, job, details, done] {
        // It may have been cancelled meanwhile.
        if (!m_jobs.contains(job))
            return;
        job->done = done;
        if (done == job->requests.size())
            m_jobs.removeOne(job);
        if (!details.isEmpty())
            emit read(details);
        if (m_jobs.isEmpty())
            emit finished();
    };
    // Who has cancelled it may be gone.
    job->work.change([this, &emitRead] { QMetaObject::invokeMethod(this, emitRead, Qt::QueuedConnection); });
}
