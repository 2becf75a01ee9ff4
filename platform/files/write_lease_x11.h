// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace platform {

/// As isOpenForWriting() of a path, for the descriptor of a file that is open for reading only.
std::optional<bool> isOpenForWriting(int file);

} // namespace platform
