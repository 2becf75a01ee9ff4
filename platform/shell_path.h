#pragma once

class QString;

namespace platform {

/// The path in a form that the system's shell, and the programs that it starts, can be handed.
///
/// On Windows these take 260 characters at most. A longer path is given by the short names that the file system keeps
/// beside the long ones, where it does; else it stays as it is, and the shell tells the user that it finds nothing. On
/// other systems the path itself.
///
/// @param path absolute, of a file or a folder, with either separator.
QString shellPath(const QString& path);

} // namespace platform
