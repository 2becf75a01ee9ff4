#pragma once

#include <QString>

#include <optional>

namespace platform {

/// A path as Windows' own calls take it whatever its length: cleaned, with backslashes, and marked as one that needs no
/// more looking into ("\\?\C:\videos", "\\?\UNC\host\share"). Without that mark, and on a system that has not been told
/// otherwise, a path ends at 260 characters.
///
/// @param path absolute, with either separator. A relative or a marked one is only given its backslashes.
QString extendedWindowsPath(const QString& path);

/// The path without the mark that extendedWindowsPath() gives it.
QString withoutWindowsMark(const QString& path);

/// What Windows' "explorer" is to be called with to show a file selected in its folder: "/select," and the path, as one
/// text in which the path cannot be taken for anything else. Nothing for a path that no file can have.
///
/// @param path absolute, with either separator.
std::optional<QString> explorerArguments(const QString& path);

} // namespace platform
