#pragma once

#include <chrono>

class QString;

namespace platform {

/// How long a file manager on the message bus has to answer.
inline constexpr std::chrono::milliseconds kFileManagerAnswerLimit{10'000};

/// Opens the system's file manager on the folder of a file, with the file selected; path is absolute. Returns at once.
/// User-interface thread, the application object must live.
///
/// The path is handed over as one argument, whatever characters it holds: no part of it is ever read as a command or an
/// option. Windows: "explorer". X11: the file manager that answers on the session's message bus as
/// "org.freedesktop.FileManager1"; where none does, or none within the limit, the folder is opened without the
/// selection. Reports no result: a file manager that fails to come up tells the user itself, and a line in the log
/// says where a system could not be asked.
void revealInFileManager(const QString& path, std::chrono::milliseconds answerLimit = kFileManagerAnswerLimit);

/// The path in a form that the system's shell, and the programs that it starts, can be handed.
///
/// On Windows these take 260 characters at most. A longer path is given by the short names that the file system keeps
/// beside the long ones, where it does; else it stays as it is, and the shell tells the user that it finds nothing. On
/// other systems the path itself.
///
/// @param path absolute, of a file or a folder, with either separator.
QString shellPath(const QString& path);

} // namespace platform
