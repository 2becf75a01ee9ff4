// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <cstdint>
#include <optional>

/// Reads a Windows crash report, the format of the debugging library's MiniDumpWriteDump() as <minidumpapiset.h> lays
/// it out. A report that was cut off after its lists is read like a whole one; what is not there is empty.
class Minidump
{
public:
    struct Exception
    {
        uint32_t threadId = 0;
        uint32_t code = 0;
        uint64_t address = 0;
    };

    explicit Minidump(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    /// Whether it has a minidump's signature and version.
    bool isMinidump() const;
    /// What the writer was asked to put in (MINIDUMP_TYPE).
    uint64_t flags() const;
    QList<uint32_t> threadIds() const;
    /// Paths of the program and its libraries as Windows names them.
    QStringList modules() const;
    /// Why the report was written, when it was for an exception.
    std::optional<Exception> exception() const;

private:
    /// Where the stream of a type lies (MINIDUMP_STREAM_TYPE).
    std::optional<uint32_t> stream(uint32_t type) const;
    QString textAt(uint32_t offset) const;
    /// 0 where the bytes end before it.
    template <typename T>
    T number(uint64_t offset) const;

    QByteArray m_bytes;
};
