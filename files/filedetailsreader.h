// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/filedetails.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QThreadPool;

/// Reads sizes and lengths of files, one after the other on a thread of its own, when nothing else wants the processor.
/// User-interface thread.
class FileDetailsReader : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QString path;
        /// Has a length.
        bool isMedia = false;
        /// Of a file of the same size nothing is read again.
        FileDetails known;
    };

    explicit FileDetailsReader(QObject* parent = nullptr);
    /// Interrupts what is being read. Does not wait for a disk that does not answer.
    ~FileDetailsReader() override;

    void add(const QList<Request>& requests);

    /// A recording needs disk and processor for itself.
    void cancelAll();

    /// Of these files nothing is read any more. When this returns they are closed, unless the disk does not answer;
    /// waits only for one that is being read.
    void cancel(const QStringList& paths);

signals:
    /// What is not as it was known, by path; of many files once a second.
    void read(const QHash<QString, FileDetails>& details);
    /// Everything has been read.
    void finished();

private:
    struct Job;

    void start(const std::shared_ptr<Job>& job);
    void run(const std::shared_ptr<Job>& job);
    void report(const std::shared_ptr<Job>& job);
    void onReport(const std::shared_ptr<Job>& job);

    QList<std::shared_ptr<Job>> m_jobs;
    /// Of one thread.
    std::unique_ptr<QThreadPool> m_thread;
};
