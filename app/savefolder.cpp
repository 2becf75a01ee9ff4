// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "app/shownpath.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <QStringList>
#include <QTemporaryFile>

namespace {

/// Makes the folder.
SaveFolderFault faultInUse(const QString& folder)
{
    if (!QDir::isAbsolutePath(folder))
        return SaveFolderFault::NotAbsolute;
    if (!QDir().mkpath(folder))
        return SaveFolderFault::CannotBeMade;
    // On Windows a path without a drive or a server is one of the present drive.
    const QString real = QFileInfo(folder).canonicalFilePath();
    const bool isOnPresentDrive = folder.startsWith(u'/') && !folder.startsWith(QLatin1String("//"));
    if (real == QLatin1String("/") || (isOnPresentDrive && QDir(real).isRoot()))
        return SaveFolderFault::Root;
    // Permissions say little: root has them all, and Windows has lists of them.
    QTemporaryFile trial(folder + QLatin1String("/.kestrano-XXXXXX"));
    return trial.open() ? SaveFolderFault::None : SaveFolderFault::CannotBeWritten;
}

bool canBeUsed(const QString& folder)
{
    return faultInUse(folder) == SaveFolderFault::None;
}

QString parentOf(const QString& path)
{
    return QFileInfo(path).path();
}

/// The folders on the way to one that are not there, that one first.
QStringList missingFolders(const QString& folder)
{
    QStringList missing;
    for (QString path = QDir::cleanPath(folder); !QFileInfo::exists(path) && parentOf(path) != path;
         path = parentOf(path))
        missing.append(path);
    return missing;
}

} // namespace

SaveFolderFault saveFolderFault(const QString& folder)
{
    const QStringList missing = missingFolders(folder);
    const SaveFolderFault fault = faultInUse(folder);
    for (const QString& made : missing)
        QDir().rmdir(made);
    return fault;
}

QString typedSaveFolder(const QString& typed)
{
    const QString path = QDir::fromNativeSeparators(typed.trimmed());
    const bool isBelowHome = path == QLatin1String("~") || path.startsWith(QLatin1String("~/"));
    const QString whole = isBelowHome ? QDir::homePath() + path.mid(1) : path;
    return whole.isEmpty() ? whole : QDir::cleanPath(whole);
}

QString existingPartOf(const QString& folder)
{
    const QStringList missing = missingFolders(folder);
    return missing.isEmpty() ? folder : parentOf(missing.last());
}

qint64 freeBytesIn(const QString& folder)
{
    // Some file systems report 0 of 0.
    const QStorageInfo disk(folder);
    return disk.bytesTotal() > 0 ? disk.bytesAvailable() : -1;
}

QString defaultSaveFolder(QLatin1String key)
{
    return defaultSettings().at(key).toString();
}

SaveFolder usableSaveFolder(const QString& stored, QLatin1String key)
{
    if (canBeUsed(stored))
        return {stored, false};
    const QString fallback = defaultSaveFolder(key);
    const bool isReplaced = stored != fallback && canBeUsed(fallback);
    if (isReplaced)
        SCLogger::warning(QStringLiteral("The save folder cannot be used, files go to the default folder: \"%1\"")
                              .arg(shownPath(stored)));
    else
        SCLogger::error(QStringLiteral("Neither the save folder nor the default folder can be used: \"%1\"")
                            .arg(shownPath(stored)));
    return {fallback, isReplaced};
}
