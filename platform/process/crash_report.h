// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

class QByteArray;
class QString;

namespace platform {

inline constexpr std::chrono::seconds kCrashReportLimit{20};

/// Has the system write a report when the program crashes: "crash_<yyyy-MM-dd_HH-mm-ss>.dmp", local time, in folder,
/// which replaces a file of that name. Exit status and core dump stay what they would have been.
/// On Windows a minidump with full memory for every unhandled exception. On X11 systems a text for SIGSEGV, SIGBUS,
/// SIGILL, SIGFPE and SIGABRT; a stack overflow is reported for the calling thread only.
/// Call once, on the main thread, before the application object is made.
/// @param program name and version, for the report's head
/// @param timeout after which a report that waits for what the crashed program holds is cancelled. Not on Windows.
void installCrashReporter(const QString& folder, const QByteArray& program,
                          std::chrono::seconds timeout = kCrashReportLimit);

} // namespace platform
