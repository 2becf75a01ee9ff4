// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace platform {

/// Whether a process, this one included, has the file open for writing. Nothing where the system does not know: on X11
/// systems for files of other users, and on some networks. Any thread.
std::optional<bool> isOpenForWriting(const QString& path);

} // namespace platform
