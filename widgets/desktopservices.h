// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

class QObject;
class QString;

/// Opens a file or folder (absolute path) with the system's program; failures are logged. User-interface thread.
bool openFile(const QString& path);

/// The same. notOpened is called once where it fails, perhaps seconds later, unless context has gone by then.
void openFile(const QString& path, const QObject& context, const std::function<void()>& notOpened);

/// Opens a page in the web browser; failures are logged. Refuses anything but http and https with a host, which the
/// system might take for a file or command. User-interface thread.
bool openWebPage(const QString& address);
