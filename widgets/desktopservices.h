#pragma once

class QString;

/// Opens a file with the program that the system has for its kind, a folder with its file manager. A warning in the log
/// says when the system could not. User-interface thread.
///
/// @param path absolute; of any length.
/// @return whether the system was asked to open it and could.
bool openFile(const QString& path);

/// Opens a page in the user's web browser. An address that is not a full one of the web (http or https, with a host) is
/// not opened, since the system would take it for a file, a program or a command; a warning in the log says so.
/// User-interface thread.
///
/// @return whether the system was asked to open it and could
bool openWebPage(const QString& address);
