#pragma once

#include <QtGlobal>

namespace platform {

/// A function of the system's OpenGL library by its name ("glPixelStorei"), of those that every version has. It acts on
/// the context that is current on the thread. Null where there is no such library; the caller then does without.
QFunctionPointer glFunction(const char* name);

} // namespace platform
