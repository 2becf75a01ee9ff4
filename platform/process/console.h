// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// Attaches the process to the console of the process that started it, for standard output and standard error. Call
/// first thing in main().
///
/// @return false when there is none, and on X11, where a terminal is inherited; the streams are left as they are.
bool attachToParentConsole();

} // namespace platform
