// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace platform {

/// Reports what a part of this folder could not do to whoever keeps the log. Any thread.
void reportFailure(const QString& sentence);

/// Reports a call to the system that failed, in the system's own words: "RegisterHotKey failed: Hot key is already
/// registered. (error 1409)". Any thread.
///
/// @param call  the system function's name. Not a text object: making one might set another error.
/// @param error the system's number of the error, GetLastError() on Windows and errno elsewhere.
void reportSystemFailure(const char* call, unsigned long error);

/// The system's own words for one of its errors, as reportSystemFailure() has them.
QString systemErrorText(unsigned long error);

using FailureSink = void (*)(const QString& sentence);

/// Hands reports to sink, on the thread that reports; null means Qt's message output, as at first.
void setFailureSink(FailureSink sink);

} // namespace platform
