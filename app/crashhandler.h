// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Makes the crash folder and installs the crash reporter. Call once, after appidentity::apply() and before the
/// application object is made.
void installCrashHandler();

/// The log folder at the first call.
const QString& crashFolder();
