// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// Attaches standard output and error to the console of the parent process. Call first thing in main().
/// @return false when there is none, and on X11, where a terminal is inherited.
bool attachToParentConsole();

} // namespace platform
