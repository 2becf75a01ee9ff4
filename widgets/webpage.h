#pragma once

class QString;

/// Opens a page in the user's web browser. An address that is not a full one of the web (http or https, with a host) is
/// not opened, since the system would take it for a file, a program or a command; a warning in the log says so.
/// User-interface thread.
///
/// @return whether the system was asked to open it and could
bool openWebPage(const QString& address);
