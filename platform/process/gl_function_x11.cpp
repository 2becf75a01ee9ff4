// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/gl_function.h"

#include <QLibrary>

QFunctionPointer platform::glFunction(const char* name)
{
    return QLibrary::resolve(QStringLiteral("GL"), 1, name);
}
