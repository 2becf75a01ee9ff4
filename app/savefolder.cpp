// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/savefolder.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "app/shownpath.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

namespace {

bool canBeUsed(const QString& folder)
{
    if (!QDir::isAbsolutePath(folder) || !QDir().mkpath(folder))
        return false;
    // On Windows a path without a drive or a server is one of the present drive.
    const QString real = QFileInfo(folder).canonicalFilePath();
    const bool isOnPresentDrive = folder.startsWith(u'/') && !folder.startsWith(QLatin1String("//"));
    if (real == QLatin1String("/") || (isOnPresentDrive && QDir(real).isRoot()))
        return false;
    // Permissions say little: root has them all, and Windows has lists of them.
    QTemporaryFile trial(folder + QLatin1String("/.kestrano-XXXXXX"));
    return trial.open();
}

} // namespace

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
