#pragma once

#include <QString>

namespace platform {

/// A path as Windows' own calls take it whatever its length: cleaned, with backslashes, and marked as one that needs no
/// more looking into ("\\?\C:\videos", "\\?\UNC\host\share"). Without that mark, and on a system that has not been told
/// otherwise, a path ends at 260 characters.
///
/// @param path absolute, with either separator. A relative or a marked one is only given its backslashes.
QString extendedWindowsPath(const QString& path);

/// The path without the mark that extendedWindowsPath() gives it.
QString withoutWindowsMark(const QString& path);

} // namespace platform
