// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/recordingfinisher.h"

#include "app/sclogger.h"
#include "files/filework.h"
#include "files/flacfile.h"
#include "files/mp4file.h"
#include "platform/files/file_use.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QThreadPool>

namespace {

using Recorder = RecordingFinisher::Recorder;

/// For the log, which says no more of a path.
QString nameOf(const QString& path)
{
    return QFileInfo(path).fileName();
}

enum class Result
{
    Whole,
    NotWhole,
    /// Shall be tried again.
    Later,
};

Result finishMp4(const QString& path, FileWork& work)
{
    if (cutBrokenFragmentHead(path, work))
        SCLogger::warning(QStringLiteral("The recording ended within the head of a fragment, which is cut off: %1")
                              .arg(nameOf(path)));
    if (!isFragmentedMp4(path))
        return Result::Whole;
    QString error;
    switch (makePlainMp4(path, work, error)) {
    case PlainMp4::Made:
        SCLogger::info(QStringLiteral("The recording has its index now: %1").arg(nameOf(path)));
        return Result::Whole;
    case PlainMp4::Cancelled:
        return Result::Later;
    case PlainMp4::NoSpace:
        SCLogger::warning(QStringLiteral("There is no space to give the recording its index; it plays without: %1")
                              .arg(nameOf(path)));
        return Result::Later;
    case PlainMp4::Failed:
        SCLogger::warning(QStringLiteral("The recording could not be given its index (%1); it plays without: %2")
                              .arg(error, nameOf(path)));
        return Result::NotWhole;
    }
    Q_UNREACHABLE();
}

Result finishFlac(const QString& path, FileWork& work)
{
    QString error;
    if (work.isCancelled())
        return Result::Later;
    if (writeFlacLength(path, work, error))
        return Result::Whole;
    if (work.isCancelled())
        return Result::Later;
    SCLogger::warning(
        QStringLiteral("The length of the recording could not be written (%1): %2").arg(error, nameOf(path)));
    return Result::NotWhole;
}

/// Where the system does not know who writes to a file.
bool isLeftAlone(const QString& path, Recorder recorder)
{
    const qint64 leastMs = recorder == Recorder::ThisRun ? 1000 : 60'000;
    const qint64 quietMs = QFileInfo(path).lastModified().msecsTo(QDateTime::currentDateTime());
    // A clock that was set back would make it wait.
    return quietMs >= leastMs || quietMs < 0 || !QFileInfo::exists(path);
}

bool isClosed(const QString& path, Recorder recorder, const FileWork& work)
{
    constexpr qint64 kLimitMs = 15'000;
    constexpr unsigned long kPollMs = 50;
    QElapsedTimer waited;
    waited.start();
    while (!work.isCancelled() && !waited.hasExpired(kLimitMs)) {
        const auto isWritten = platform::isOpenForWriting(path);
        if (isWritten ? !*isWritten : isLeftAlone(path, recorder))
            return true;
        if (recorder == Recorder::Other)
            break;
        QThread::msleep(kPollMs);
    }
    if (!work.isCancelled())
        SCLogger::info(
            QStringLiteral("The recording is still being written to and is finished later: %1").arg(nameOf(path)));
    return false;
}

Result finish(const QString& path, Recorder recorder, FileWork& work)
{
    if (!isClosed(path, recorder, work))
        return Result::Later;
    const QString ending = QFileInfo(path).suffix();
    if (ending == QLatin1String("mp4"))
        return finishMp4(path, work);
    return ending == QLatin1String("flac") ? finishFlac(path, work) : Result::Whole;
}

} // namespace

struct RecordingFinisher::Job
{
    explicit Job(const QString& file) : path(file) {}

    const QString path;
    FileWork work;
    /// Used by the thread, and read once that has signalled its end.
    Result result = Result::Later;
};

RecordingFinisher::RecordingFinisher(QObject* parent) : QObject(parent), m_thread(std::make_unique<QThreadPool>())
{
    m_thread->setMaxThreadCount(1);
}

RecordingFinisher::~RecordingFinisher()
{
    constexpr int kInterruptLimitMs = 2000;
    cancelAll();
    // The process is about to end, and the thread uses nothing of this object any more.
    if (!m_thread->waitForDone(kInterruptLimitMs))
        (void)m_thread.release();
}

void RecordingFinisher::cancelAll()
{
    for (const auto& job : std::as_const(m_jobs))
        job->work.cancel();
    m_jobs.clear();
}

void RecordingFinisher::finishWithin(std::chrono::milliseconds limit)
{
    constexpr int kInterruptLimitMs = 500;
    if (m_thread->waitForDone(static_cast<int>(limit.count())))
        return;
    cancelAll();
    m_thread->waitForDone(kInterruptLimitMs);
}

void RecordingFinisher::add(const QString& path, Recorder recorder)
{
    if (m_jobs.contains(path))
        return;
    const auto job = std::make_shared<Job>(path);
    m_jobs.insert(path, job);
    m_thread->start([this, job, recorder] {
        job->result = finish(job->path, recorder, job->work);
        // Who has cancelled it may be gone.
        job->work.change([this, &job] {
            QMetaObject::invokeMethod(
                this, [this, job] { onDone(job->path, job); }, Qt::QueuedConnection);
        });
    });
}

void RecordingFinisher::onDone(const QString& path, const std::shared_ptr<Job>& job)
{
    // It may have been cancelled, and added again.
    if (m_jobs.value(path) != job)
        return;
    m_jobs.remove(path);
    if (job->result == Result::Later)
        emit postponed(path);
    else
        emit finished(path, job->result == Result::Whole);
}

void RecordingFinisher::cancel(const QString& path)
{
    if (const auto job = m_jobs.take(path))
        job->work.cancel();
    QFile::remove(unfinishedMp4Path(path));
}
