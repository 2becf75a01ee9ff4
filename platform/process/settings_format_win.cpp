// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/settings_format.h"

namespace platform {

QSettings::Format settingsFormat(QSettings::ReadFunc, QSettings::WriteFunc)
{
    return QSettings::NativeFormat;
}

} // namespace platform
