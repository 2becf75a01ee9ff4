#pragma once

#include <chrono>

class QByteArray;
class QString;

namespace platform {

/// How long a report may wait for what the crashed program holds.
inline constexpr std::chrono::seconds kCrashReportLimit{20};

/// Has the system write a report when the program crashes: a file "crash_<yyyy-MM-dd_HH-mm-ss>.dmp", in local time, in
/// folder. A file of that name is replaced; when it cannot be made there is silently no report. Afterwards the crash
/// takes its usual course, so exit status, core dump and the system's own crash handling are what they would have been.
///
/// On Windows a minidump with full memory, handle data, unloaded modules and thread information, for every unhandled
/// exception. On X11 systems a text for the signals SIGSEGV, SIGBUS, SIGILL, SIGFPE and SIGABRT, by which an uncaught
/// exception ends too: program, signal, address, threads, loaded objects and the crashing thread's call stack. It is
/// written with what may be called in a signal handler. A stack overflow is reported for the thread that called this;
/// the others have no second stack to report on.
///
/// Replaces the handlers that are there. Call once, on the main thread, before the application object is made.
///
/// @param program name and version, for the report's head.
/// @param timeout a report that waits for what the crashed program holds is given up after that time. Not
///        on Windows, where a report takes the time that it takes.
void installCrashReporter(const QString& folder, const QByteArray& program,
                          std::chrono::seconds timeout = kCrashReportLimit);

} // namespace platform
