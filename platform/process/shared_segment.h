#pragma once

#include <QSharedMemory>
#include <QString>

#include <memory>

namespace platform {

/// A segment of memory that processes share by a key. On every system its system-wide name is the one that
/// QSharedMemory makes of the key.
///
/// On Windows reading and writing is guarded by the segment's own lock. On X11 systems the segment gets no lock of the
/// toolkit's along with it: that is a System V semaphore, which a process killed at the wrong moment leaves taken for
/// ever, and which making a segment sets free whoever holds it. There the caller excludes other copies himself, by a
/// lock that the kernel drops with its holder (platform::InstanceLock), whenever he attaches, makes, reads, writes or
/// detaches the segment.
class SharedSegment
{
public:
    explicit SharedSegment(QString key);

    /// Attaches the segment of that key; false where there is none, or where the user may not.
    bool attach();

    /// Makes the segment and attaches it; false, with the reason in error(), where it exists already or cannot be made.
    /// After a failure, attach() and create() may be called again.
    bool create(qsizetype size);

    /// Detaches; the last one to do so removes the segment.
    void detach();

    bool isAttached() const { return m_memory->isAttached(); }

    /// Why the last attach() or create() that failed did so.
    QSharedMemory::SharedMemoryError error() const { return m_error; }
    QString errorString() const { return m_errorString; }

    /// Copies the first size bytes of the attached segment; false where it has fewer.
    bool read(void* destination, qsizetype size);
    /// Writes the first size bytes of the segment that create() made at least as large.
    void write(const void* source, qsizetype size);

private:
    /// An object that has neither made nor attached anything yet.
    static std::unique_ptr<QSharedMemory> makeMemory(const QString& key);

    bool noteResult(bool succeeded);
    void forget();

    QString m_key;
    std::unique_ptr<QSharedMemory> m_memory;
    QSharedMemory::SharedMemoryError m_error = QSharedMemory::NoError;
    QString m_errorString;
};

} // namespace platform
