// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

class QString;

namespace platform {

/// xdg-open may run the file's program itself; an end that comes later is that program's.
inline constexpr std::chrono::milliseconds kOpeningAnswerLimit{5000};

/// Opens a file or folder (absolute path) with "xdg-open", in a session of its own, which outlives the program. Returns
/// at once. notOpened is called where it reports within kOpeningAnswerLimit that it could not. User-interface thread.
/// @return false where there is no xdg-open; always on Windows, where QDesktopServices itself reports failures
bool openWatched(const QString& path, const std::function<void()>& notOpened);

/// For tests that put a handler of their own into QDesktopServices: with false, openWatched() opens nothing.
void setOpeningWatched(bool watched);

} // namespace platform
