#pragma once

namespace platform {

/// Attaches the process to the console of the process that started it and lets standard output and standard error
/// write there. Call first thing in main(), before any text is written.
///
/// @return true when a console was attached. False when there is none, and where the system hands a terminal on by
///         itself (X11): the standard streams are then left as they are.
bool attachToParentConsole();

} // namespace platform
