// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;

/// Opens a file or folder (absolute path) with the system's program; failures are logged. User-interface thread.
bool openFile(const QString& path);

/// Opens a page in the web browser; failures are logged. Refuses anything but http and https with a host, which the
/// system might take for a file or command. User-interface thread.
bool openWebPage(const QString& address);
