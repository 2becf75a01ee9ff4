// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// Gives memory that was freed back to the system. Takes some milliseconds. On Windows the heap does so by itself.
void returnFreeMemory();

} // namespace platform
