// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Opens a file or folder with the system's program for it; failures are logged. User-interface thread.
///
/// @param path absolute; of any length
bool openFile(const QString& path);

/// Opens a page in the web browser; failures are logged. Refuses anything but http and https with a host, which the
/// system would take for a file, a program or a command. User-interface thread.
bool openWebPage(const QString& address);
