// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/settings_format.h"

namespace platform {

QSettings::Format settingsFormat(QSettings::ReadFunc readFile, QSettings::WriteFunc writeFile)
{
    return QSettings::registerFormat(QStringLiteral("conf"), readFile, writeFile, Qt::CaseSensitive);
}

} // namespace platform
