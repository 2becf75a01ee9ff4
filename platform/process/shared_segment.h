// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSharedMemory>
#include <QString>

#include <memory>

namespace platform {

/// Memory that processes share by a key, under the name that QSharedMemory makes of it. On Windows it is a
/// QSharedMemory, whose lock guards reads and writes. On X11 systems it is a System V segment without a lock
/// (docs/single-instance.md): the caller holds a platform::InstanceLock while it attaches, makes, reads, writes or
/// detaches, as far as it can be had.
class SharedSegment
{
public:
    /// @param ownFolder on X11 systems, where the file of the key is when another user has its name, or the segment
    ///                  that belongs to it; empty where there is none
    explicit SharedSegment(const QString& key, const QString& ownFolder = {});
    /// Detaches.
    ~SharedSegment();
    SharedSegment(const SharedSegment&) = delete;
    SharedSegment& operator=(const SharedSegment&) = delete;

    /// False where there is none of that key, it is another user's, or it is attached.
    bool attach();

    /// Makes and attaches it; false where it exists already or cannot be made.
    bool create(qsizetype size);

    /// The last one to detach removes the segment.
    void detach();

    bool isAttached() const;

    /// Of an attached segment.
    bool isOfOwnFolder() const;

    /// Of an attach() or create() that has just failed.
    QSharedMemory::SharedMemoryError error() const;
    QString errorString() const;

    /// False where the attached segment has fewer bytes.
    bool read(void* destination, qsizetype size);
    void write(const void* source, qsizetype size);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
