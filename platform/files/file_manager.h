// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

class QString;

namespace platform {

/// How long a file manager on the message bus has to answer.
inline constexpr std::chrono::milliseconds kFileManagerAnswerLimit{10'000};

/// Opens the system's file manager on the folder of a file (absolute path), with the file selected. Returns at once.
/// User-interface thread, the application object must live.
///
/// The path is one argument, whatever it holds. Windows: "explorer". X11: "org.freedesktop.FileManager1" on the
/// session's message bus; without an answer within the limit the folder is opened without the selection. Failures are
/// reported in the log only.
void revealInFileManager(const QString& path, std::chrono::milliseconds answerLimit = kFileManagerAnswerLimit);

/// An absolute path as the system's shell, and programs that it starts, can take it: on Windows a path of more than 260
/// characters by its short names, where the file system keeps them; else the path itself.
QString shellPath(const QString& path);

} // namespace platform
