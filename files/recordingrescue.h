// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>

namespace platform {
class HeldFile;
}

/// Copies files that no path leads to any more, one after the other on a thread of its own. User-interface thread.
class RecordingRescue : public QObject
{
    Q_OBJECT

public:
    explicit RecordingRescue(QObject* parent = nullptr);
    /// Waits for the copies.
    ~RecordingRescue() override;

    /// Makes the target, with its folder; copies when nobody writes to the file any more. done() follows.
    /// @return false, and nothing follows, where it cannot be made or is there
    bool begin(std::shared_ptr<const platform::HeldFile> file, const QString& target);

signals:
    /// What could be copied stays also where it is not all. Where nothing could, there is no target any more.
    void done(const QString& target, bool isWhole);

private:
    /// Of one thread. Goes first.
    QThreadPool m_thread;
};
