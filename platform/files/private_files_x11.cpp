// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/private_files.h"

#include <QDir>
#include <QFileInfo>

namespace platform {

namespace {

constexpr QFile::Permissions kPrivateFolder = kPrivateFile | QFile::ExeOwner;
constexpr QFile::Permissions kOthers =
    QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

void makePrivate(const QFileInfo& file, QFile::Permissions permissions)
{
    if ((file.permissions() & kOthers) != 0)
        QFile::setPermissions(file.filePath(), permissions);
}

} // namespace

bool makePrivateFolder(const QString& path)
{
    const QFileInfo folder(path);
    if (!folder.exists())
        return QDir().mkpath(folder.path()) && QDir().mkdir(path, kPrivateFolder);
    if (!folder.isDir())
        return false;
    makePrivate(folder, kPrivateFolder);
    const QFileInfoList files = QDir(path).entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo& file : files)
        makePrivate(file, kPrivateFile);
    return true;
}

} // namespace platform
