// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/gl_function.h"
#include "platform/system_failure.h"

#include <QLibrary>

QFunctionPointer platform::glFunction(const char* name)
{
    // Nothing unloads it again.
    QLibrary library(QStringLiteral("opengl32"));
    const QFunctionPointer function = library.resolve(name);
    if (function == nullptr)
        reportFailure(QStringLiteral("OpenGL has no %1: %2").arg(QLatin1String(name), library.errorString()));
    return function;
}
