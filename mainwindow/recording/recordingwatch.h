// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/recording/diskspace.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <memory>

namespace platform {
class HeldFile;
}

/// Watches the file of a recording and the space beside it, on a thread of its own, because a folder on a network may
/// take its time to answer. Reports once for a recording. User-interface thread.
class RecordingWatch : public QObject
{
    Q_OBJECT

public:
    /// Of a folder; negative where it is not known. Called on the other thread.
    using FreeBytes = std::function<qint64(const QString& folder)>;
    static qint64 freeBytes(const QString& folder);

    /// @param intervalMs between two looks
    explicit RecordingWatch(int intervalMs, FreeBytes freeBytes = &RecordingWatch::freeBytes);
    ~RecordingWatch() override;

    /// The file need not be there yet: it is held as soon as it is.
    void start(const QString& path);

    /// @return the file; null where it never was there
    std::shared_ptr<platform::HeldFile> stop();

signals:
    void spaceRunsOut();
    /// Its path leads to the file no more.
    void fileGone();

private:
    struct Look;

    static Look lookAt(const QString& path, std::shared_ptr<platform::HeldFile> file, const FreeBytes& freeBytes);
    void look();
    void judge(const Look& seen);

    const int m_intervalMs;
    const FreeBytes m_freeBytes;
    QString m_path;
    std::shared_ptr<platform::HeldFile> m_file;
    diskspace::GrowthRate m_growth;
    QElapsedTimer m_recorded;
    QTimer m_timer;
    bool m_isLooking = false;
    /// What a late look belongs to.
    int m_recording = 0;
    /// Of one thread. Goes first.
    QThreadPool m_thread;
};
