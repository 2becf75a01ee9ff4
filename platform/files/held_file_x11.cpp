// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/disk_sync.h"
#include "platform/files/held_file.h"
#include "platform/files/write_lease_x11.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

bool isSameFile(const struct stat& left, const struct stat& right)
{
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/// File managers rename what is deleted into the trash of the user or of the disk, and NFS what is still open.
bool isOfDeleted(const QString& path)
{
    static const QRegularExpression trash(QStringLiteral("/(Trash|\\.Trash/\\d+|\\.Trash-\\d+)/files/"));
    return trash.match(path).hasMatch() || QFileInfo(path).fileName().startsWith(QLatin1String(".nfs"));
}

/// The next block of a file; empty at its end. False where it cannot be read.
bool readBlock(int descriptor, qint64 position, std::vector<char>& block, qint64& bytes)
{
    do
        bytes = pread(descriptor, block.data(), block.size(), position);
    while (bytes < 0 && errno == EINTR);
    return bytes >= 0;
}

} // namespace

std::shared_ptr<HeldFile> HeldFile::open(const QString& path)
{
    // O_NONBLOCK: a pipe under that name would wait for its writer.
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return nullptr;
    struct stat held = {};
    const bool hasLinkCount = fstat(descriptor, &held) == 0 && held.st_nlink > 0;
    return std::shared_ptr<HeldFile>(new HeldFile(path, descriptor, hasLinkCount));
}

HeldFile::~HeldFile()
{
    close(m_descriptor);
}

bool HeldFile::isInPlace() const
{
    struct stat named = {};
    struct stat held = {};
    // The numbers of files are not compared: file systems of networks change them.
    return stat(QFile::encodeName(m_path).constData(), &named) == 0 && fstat(m_descriptor, &held) == 0 &&
           (held.st_nlink > 0 || !m_hasLinkCount);
}

qint64 HeldFile::bytes() const
{
    struct stat held = {};
    return fstat(m_descriptor, &held) == 0 ? held.st_size : 0;
}

bool HeldFile::isWrittenTo() const
{
    constexpr qint64 kQuietSeconds = 2;
    if (const auto isOpen = isOpenForWriting(m_descriptor))
        return *isOpen;
    struct stat held = {};
    if (fstat(m_descriptor, &held) != 0)
        return false;
    const qint64 quietSeconds = QDateTime::currentSecsSinceEpoch() - held.st_mtim.tv_sec;
    // A clock that was set back would make it wait.
    return quietSeconds >= 0 && quietSeconds < kQuietSeconds;
}

bool HeldFile::isHeld() const
{
    return true;
}

bool HeldFile::isDeleted() const
{
    struct stat held = {};
    return m_hasLinkCount && fstat(m_descriptor, &held) == 0 && held.st_nlink == 0;
}

QString HeldFile::currentPath() const
{
    const QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(m_descriptor));
    struct stat named = {};
    struct stat held = {};
    const bool isThere = stat(QFile::encodeName(path).constData(), &named) == 0 && fstat(m_descriptor, &held) == 0 &&
                         isSameFile(named, held);
    return isThere && !isOfDeleted(path) ? path : QString();
}

bool HeldFile::copyTo(const QString& path, QString& error) const
{
    constexpr std::size_t kBlockBytes = 1024UL * 1024;
    QFile target(path);
    bool isWritten = target.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    std::vector<char> block(kBlockBytes);
    qint64 bytes = 1;
    for (qint64 position = 0; isWritten && bytes > 0; position += bytes) {
        if (!readBlock(m_descriptor, position, block, bytes)) {
            error = qt_error_string(errno);
            return false;
        }
        isWritten = target.write(block.data(), bytes) == bytes;
    }
    if (isWritten && syncToDisk(target.handle()))
        return true;
    // QFile does not report a write of which a part has succeeded.
    error = qt_error_string(errno);
    return false;
}

} // namespace platform
