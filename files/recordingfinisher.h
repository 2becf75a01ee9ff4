// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

class QThreadPool;

/// Finishes the files of recordings that are over, one after the other on a thread of its own: a fragmented MP4 becomes
/// a plain one, a FLAC file says how long it is. They can be played meanwhile. What is interrupted leaves the file as
/// it was. A file that somebody still writes to, which may be another instance of the program, has to wait for another
/// time. User-interface thread.
class RecordingFinisher : public QObject
{
    Q_OBJECT

public:
    explicit RecordingFinisher(QObject* parent = nullptr);
    /// Interrupts what is not finished. Does not wait for a disk that does not answer.
    ~RecordingFinisher() override;

    /// Who has recorded a file. An output of this run that has ended is waited for until it has closed its file. At
    /// others, which may go on for hours, there is one look.
    enum class Recorder
    {
        ThisRun,
        Other,
    };

    /// Ignored while the file is waiting for its turn or being finished.
    void add(const QString& path, Recorder recorder = Recorder::ThisRun);

    /// Whether the file is waiting for its turn or being finished.
    bool has(const QString& path) const { return m_jobs.contains(path); }

    /// Interrupts it. When this returns the file is changed no more, and nothing is left beside it.
    void cancel(const QString& path);

    /// Interrupts all: a recording needs disk and processor for itself.
    void cancelAll();

    /// Waits so long, and interrupts what is not finished then.
    void finishWithin(std::chrono::milliseconds limit);

signals:
    /// There is nothing left to do with the file. @param isWhole false where it could not be finished
    void finished(const QString& path, bool isWhole);
    /// The file has to wait for another time.
    void postponed(const QString& path);

private:
    struct Job;

    void onDone(const QString& path, const std::shared_ptr<Job>& job);

    QHash<QString, std::shared_ptr<Job>> m_jobs;
    /// Of one thread.
    std::unique_ptr<QThreadPool> m_thread;
};
