// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/savefolder.h"
#include "mainwindow/recording/diskspace.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class QThreadPool;
namespace platform {
class HeldFile;
}

/// Watches the file of a recording and the space beside it, on threads of its own, because a folder on a network may
/// take its time to answer, or never do. Reports once for a recording. User-interface thread.
class RecordingWatch : public QObject
{
    Q_OBJECT

public:
    /// Of a folder; negative where it is not known. Called on another thread.
    using FreeBytes = std::function<qint64(const QString& folder)>;

    /// @param intervalMs between two looks
    explicit RecordingWatch(int intervalMs, FreeBytes freeBytes = &freeBytesIn);
    ~RecordingWatch() override;

    /// The file need not be there yet: it is held as soon as it is.
    void start(const QString& path);

    /// @return the file; null where it never was there
    std::shared_ptr<platform::HeldFile> stop();

signals:
    void spaceRunsOut();
    /// Its path leads to the file no more, as two looks have shown.
    void fileGone();

private:
    struct Look;

    static Look lookAt(const QString& path, std::shared_ptr<platform::HeldFile> file, const FreeBytes& freeBytes);
    void look();
    void onLooked(int recording, const Look& seen);
    void judge(const Look& seen);

    const int m_intervalMs;
    const FreeBytes m_freeBytes;
    QString m_path;
    std::shared_ptr<platform::HeldFile> m_file;
    diskspace::GrowthRate m_growth;
    QElapsedTimer m_recorded;
    QTimer m_timer;
    bool m_isLooking = false;
    /// Looks in a row that have not found the file in its place.
    int m_timesMissing = 0;
    /// What a late look belongs to.
    int m_recording = 0;
    /// They use nothing of this object: one whose look hangs outlives it.
    std::unique_ptr<QThreadPool> m_threads;
};
