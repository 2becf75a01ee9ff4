// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

class QByteArray;
class QString;

namespace platform {

inline constexpr std::chrono::seconds kCrashReportLimit{20};

/// Has the system write a report when the program crashes: "crash_<yyyy-MM-dd_HH-mm-ss>.dmp", local time, in folder. A
/// file of that name is replaced; where none can be made there is silently no report. The crash then takes its usual
/// course: exit status and core dump stay what they would have been.
///
/// On Windows a minidump with full memory, for every unhandled exception. On X11 systems a text for SIGSEGV, SIGBUS,
/// SIGILL, SIGFPE and SIGABRT (an uncaught exception ends by it): signal, address, threads, loaded objects, call stack.
/// A stack overflow is reported for the calling thread only; others have no second stack.
///
/// Replaces the present handlers. Call once, on the main thread, before the application object is made.
///
/// @param program name and version, for the report's head.
/// @param timeout after which a report is cancelled that waits for what the crashed program holds. Not on Windows.
void installCrashReporter(const QString& folder, const QByteArray& program,
                          std::chrono::seconds timeout = kCrashReportLimit);

} // namespace platform
