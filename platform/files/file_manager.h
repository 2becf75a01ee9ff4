// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

class QString;

namespace platform {

inline constexpr std::chrono::milliseconds kFileManagerAnswerLimit{10'000};

/// Opens the system's file manager on a file's folder with the file (absolute path) selected: "explorer", or
/// "org.freedesktop.FileManager1" on the session's message bus, without whose answer the folder is opened. Returns at
/// once; failures are logged. User-interface thread; needs the application object.
void revealInFileManager(const QString& path, std::chrono::milliseconds answerLimit = kFileManagerAnswerLimit);

/// An absolute path as the system's shell takes it: on Windows, above 260 characters, by its short names, where the
/// file system keeps them.
QString shellPath(const QString& path);

} // namespace platform
