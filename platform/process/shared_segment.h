// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSharedMemory>
#include <QString>

#include <memory>

namespace platform {

/// Memory that processes share by a key, under the name that QSharedMemory makes of it. On Windows the segment's own
/// lock guards reads and writes. On X11 systems it has none (docs/single-instance.md): the caller holds a
/// platform::InstanceLock during every call.
class SharedSegment
{
public:
    explicit SharedSegment(QString key);

    /// False where there is none of that key, or the user may not.
    bool attach();

    /// Makes and attaches it; false where it exists already or cannot be made.
    bool create(qsizetype size);

    /// The last one to detach removes the segment.
    void detach();

    bool isAttached() const { return m_memory->isAttached(); }

    /// Of the last attach() or create() that failed.
    QSharedMemory::SharedMemoryError error() const { return m_error; }
    QString errorString() const { return m_errorString; }

    /// False where the attached segment has fewer bytes.
    bool read(void* destination, qsizetype size);
    /// create() made the segment at least as large.
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
