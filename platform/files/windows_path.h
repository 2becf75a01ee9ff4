// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace platform {

/// A path as Windows' own calls take it whatever its length: cleaned, with backslashes, marked ("\\?\C:\videos",
/// "\\?\UNC\host\share"). Unmarked paths end at 260 characters.
///
/// @param path absolute, with either separator. A relative or marked one only gets backslashes.
QString extendedWindowsPath(const QString& path);

/// The path without the mark that extendedWindowsPath() gives it.
QString withoutWindowsMark(const QString& path);

/// The arguments with which "explorer" shows a file selected in its folder, as one text in which the path cannot be
/// taken for anything else. Nothing for a path that no file can have.
///
/// @param path absolute, with either separator.
std::optional<QString> explorerArguments(const QString& path);

} // namespace platform
