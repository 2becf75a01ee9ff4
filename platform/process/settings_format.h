#pragma once

#include <QSettings>

namespace platform {

/// The container in which this system's users keep the settings of their programs.
///
/// On Windows the registry; the functions are not used. On X11 a file "<organisation>/<application>.conf" in the user's
/// configuration folder, which the functions read and write. Registers the format with the toolkit, so call it once.
QSettings::Format settingsFormat(QSettings::ReadFunc readFile, QSettings::WriteFunc writeFile);

} // namespace platform
