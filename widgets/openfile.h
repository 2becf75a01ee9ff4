#pragma once

class QString;

/// Opens a file with the program that the system has for its kind, a folder with its file manager. A warning in the log
/// says when the system could not. User-interface thread.
///
/// @param path absolute; of any length.
/// @return whether the system was asked to open it and could.
bool openFile(const QString& path);
