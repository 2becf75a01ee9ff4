// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

namespace platform {

/// A file that somebody else writes, held so that it can be read when its name or its folder has gone. Windows deletes
/// neither while the file is open, and nothing is held there: where a disk was pulled out, currentPath() is empty and
/// copyTo() fails, and the caller reports that the file is lost. Any thread, one at a time.
class HeldFile
{
public:
    /// Null where the path leads to no file that can be read.
    static std::shared_ptr<HeldFile> open(const QString& path);
    ~HeldFile();
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    /// Whether there still is a file under its path.
    bool isInPlace() const;

    /// What is written so far.
    qint64 bytes() const;

    /// Whether somebody may still write to it.
    bool isWrittenTo() const;

    /// Whether it can be read without its path.
    bool isHeld() const;

    /// Whether it is known to have been deleted, so that it ends with the last who has it open.
    bool isDeleted() const;

    /// Where it is now; empty where no path leads to it, or one to what is deleted: in the trash, or kept by NFS until
    /// it is closed.
    QString currentPath() const;

    /// Up to the disk. Replaces what is at the path.
    /// @param error in words
    /// @return false where the copy is not whole
    bool copyTo(const QString& path, QString& error) const;

private:
    HeldFile(const QString& path, int descriptor, bool hasLinkCount)
        : m_path(path), m_descriptor(descriptor), m_hasLinkCount(hasLinkCount)
    {}

    const QString m_path;
    const int m_descriptor;
    /// Some file systems report 0 for every file.
    const bool m_hasLinkCount;
};

} // namespace platform
