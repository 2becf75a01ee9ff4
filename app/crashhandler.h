// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Makes the crash folder and has the system write a report there when the program crashes. Call once at start-up, with
/// the application's identity set and before the application object is made.
void installCrashHandler();

/// The folder of crash reports: the log folder as it was when this was first asked for.
const QString& crashFolder();
