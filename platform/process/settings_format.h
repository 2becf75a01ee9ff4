// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSettings>

namespace platform {

/// The registry on Windows, "<organisation>/<application>.conf" in the user's configuration folder on X11, which the
/// functions read and write. Registers the format with Qt: call once.
QSettings::Format settingsFormat(QSettings::ReadFunc readFile, QSettings::WriteFunc writeFile);

} // namespace platform
