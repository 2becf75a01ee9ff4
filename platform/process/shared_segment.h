// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSharedMemory>
#include <QString>

#include <memory>

namespace platform {

/// Memory that processes share by a key, under the system-wide name that QSharedMemory makes of it.
///
/// On Windows the segment's own lock guards reading and writing. On X11 systems it has none (docs/single-instance.md),
/// and the caller holds a platform::InstanceLock whenever the segment is attached, made, read, written or detached.
class SharedSegment
{
public:
    explicit SharedSegment(QString key);

    /// Attaches the segment of that key; false where there is none, or where the user may not.
    bool attach();

    /// Makes the segment and attaches it; false, with the reason in error(), where it exists already or cannot be made.
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
    static std::unique_ptr<QSharedMemory> makeMemory(const QString& key);

    bool noteResult(bool succeeded);
    void forget();

    QString m_key;
    std::unique_ptr<QSharedMemory> m_memory;
    QSharedMemory::SharedMemoryError m_error = QSharedMemory::NoError;
    QString m_errorString;
};

} // namespace platform
