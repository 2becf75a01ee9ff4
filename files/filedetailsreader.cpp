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

#include <algorithm>

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

    QList<Request> rest() const { return requests.sliced(done); }

    const QList<Request> requests;
    FileWork work;
    // The thread writes them within a change of the work. Whoever has cancelled it has them for himself.
    /// So many of the requests have been read.
    qsizetype done = 0;
    QHash<QString, FileDetails> unreported;
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
    const auto isCancelled = [&cancelled](const Request& request) { return cancelled.contains(request.path); };
    const auto has = [&isCancelled](const std::shared_ptr<Job>& job) {
        return std::any_of(job->requests.cbegin(), job->requests.cend(), isCancelled);
    };
    const auto jobs = m_jobs;
    if (std::none_of(jobs.cbegin(), jobs.cend(), has))
        return;
    cancelAll();
    QList<Request> rest;
    QHash<QString, FileDetails> unreported;
    for (const auto& job : jobs) {
        rest.append(job->rest());
        unreported.insert(job->unreported);
    }
    const bool isBeingRead = !rest.isEmpty() && isCancelled(rest.constFirst());
    rest.removeIf(isCancelled);
    for (const QString& path : paths)
        unreported.remove(path);
    if (isBeingRead)
        m_thread->waitForDone(kInterruptLimitMs);
    const auto job = std::make_shared<Job>(rest);
    job->unreported = unreported;
    start(job);
}

void FileDetailsReader::add(const QList<Request>& requests)
{
    if (!requests.isEmpty())
        start(std::make_shared<Job>(requests));
}

void FileDetailsReader::start(const std::shared_ptr<Job>& job)
{
    m_jobs.append(job);
    m_thread->start([this, job] { run(job); });
}

/// On the thread; uses this object only through report().
void FileDetailsReader::run(const std::shared_ptr<Job>& job)
{
    constexpr qint64 kReportMs = 1000;
    QElapsedTimer sinceReport;
    sinceReport.start();
    for (const Request& request : job->requests) {
        if (job->work.isCancelled())
            return;
        const FileDetails read = detailsOf(request, job->work);
        bool isToReport = false;
        job->work.change([&] {
            ++job->done;
            if (read != request.known)
                job->unreported.insert(request.path, read);
            isToReport = !job->unreported.isEmpty() && sinceReport.hasExpired(kReportMs);
        });
        if (!isToReport)
            continue;
        report(job);
        sinceReport.restart();
    }
    report(job);
}

void FileDetailsReader::report(const std::shared_ptr<Job>& job)
{
    // Who has cancelled it may be gone.
    job->work.change([this, &job] {
        QMetaObject::invokeMethod(
            this, [this, job] { onReport(job); }, Qt::QueuedConnection);
    });
}

void FileDetailsReader::onReport(const std::shared_ptr<Job>& job)
{
    // It may have been cancelled meanwhile, or an earlier report was the last one.
    if (!m_jobs.contains(job))
        return;
    QHash<QString, FileDetails> details;
    bool isDone = false;
    job->work.change([&] {
        details = std::exchange(job->unreported, {});
        isDone = job->done == job->requests.size();
    });
    if (isDone)
        m_jobs.removeOne(job);
    if (!details.isEmpty())
        emit read(details);
    if (m_jobs.isEmpty())
        emit finished();
}
