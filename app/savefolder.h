// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QString>

struct SaveFolder
{
    QString path;
    /// The default one, because the stored one cannot be used.
    bool isReplaced = false;
};

/// The folder that is stored under a setting's key, or that setting's default where the stored one is empty, relative
/// or the root, or cannot be made or written to, which is logged. It is there then. Where the default folder cannot be
/// used either it is returned all the same, and saving will fail.
SaveFolder usableSaveFolder(const QString& stored, QLatin1String key);

/// The default of a save folder's setting. It may not be there.
QString defaultSaveFolder(QLatin1String key);

enum class SaveFolderFault
{
    None,
    NotAbsolute,
    /// Of the file system, or on Windows of the present drive.
    Root,
    CannotBeMade,
    CannotBeWritten
};

/// What usableSaveFolder() would find. A folder that is made for it is removed again. Waits for the disk.
SaveFolderFault saveFolderFault(const QString& folder);

/// As a setting stores it: without blanks around it, "." and "..", with "/", the user's home for "~".
QString typedSaveFolder(const QString& typed);

/// The folder, or the nearest one above it that is there.
QString existingPartOf(const QString& folder);

/// For the user, on the disk of a folder. -1 where it is not there or nobody can tell.
qint64 freeBytesIn(const QString& folder);
