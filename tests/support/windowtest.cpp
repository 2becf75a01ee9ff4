// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/windowtest.h"

#include "app/settings.h"

#include <QSettings>

namespace windowtest {

void resetSettings()
{
    const auto settings = openSettings();
    settings->clear();
    applyDefaultSettings(*settings);
    settings->setValue(settingskeys::kFirstRun, false);
    settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("None"));
    settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("None"));
}

} // namespace windowtest
