// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

namespace platform {

/// A function of the system's OpenGL library that every version has ("glPixelStorei"); null where there is none. It
/// acts on the thread's current context.
QFunctionPointer glFunction(const char* name);

} // namespace platform
