// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/shownpath.h"

#include <QDir>

QString shownPath(const QString& path)
{
    const QString home = QDir::homePath();
    const QString clean = QDir::fromNativeSeparators(path);
    const bool isBelow = clean == home || clean.startsWith(home + u'/');
    return isBelow && home != QDir::rootPath() ? QDir::toNativeSeparators(u'~' + clean.mid(home.size())) : path;
}
