#pragma once

class QString;

/// Makes the crash folder, which is the log folder, and has the system write a report there when the program crashes
/// (platform::installCrashReporter). Call once at start-up, when the application's identity is set and before the
/// application object is made, so that a crash of that is reported as well.
void installCrashHandler();

/// The folder of crash reports: the log folder as it was when this was first asked for.
const QString& crashFolder();
