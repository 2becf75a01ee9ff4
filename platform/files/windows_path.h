// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace platform {

/// A path for Windows' own calls, whatever its length: cleaned, with backslashes, marked ("\\?\C:\videos",
/// "\\?\UNC\host\share"). A relative or marked one only gets backslashes.
QString extendedWindowsPath(const QString& path);

/// Undoes the mark of extendedWindowsPath().
QString withoutWindowsMark(const QString& path);

/// The arguments, as one text, with which "explorer" shows a file (absolute path) selected in its folder. Nothing for a
/// path that no file can have.
std::optional<QString> explorerArguments(const QString& path);

} // namespace platform
