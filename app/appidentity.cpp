// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"

#include <QCoreApplication>
#include <QStandardPaths>

namespace appidentity {

void apply()
{
    QCoreApplication::setApplicationName(QLatin1String(kApplicationName));
    QCoreApplication::setOrganizationName(QLatin1String(kOrganizationName));
    QCoreApplication::setApplicationVersion(QLatin1String(kVersion));
}

QString dataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString logFolder()
{
    return dataFolder() + QLatin1String("/logs");
}

} // namespace appidentity
