// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace platform {

/// Reports what a part of this folder could not do. Any thread.
void reportFailure(const QString& sentence);

/// Reports a failed call in the system's words: "RegisterHotKey failed: Hot key is already registered. (error 1409)".
/// @param call no text object, since making one might set another error
/// @param error GetLastError() on Windows, errno elsewhere
void reportSystemFailure(const char* call, unsigned long error);

QString systemErrorText(unsigned long error);

using FailureSink = void (*)(const QString& sentence);

/// Reports go to sink, on the thread that reports; null, as at first, means Qt's message output.
void setFailureSink(FailureSink sink);

} // namespace platform
