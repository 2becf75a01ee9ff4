// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class FileWork;

/// Writes into a FLAC file how many samples it has, where it does not say so: by the number of its last frame, in
/// blocks of one size. The file is otherwise left as it is. Any thread.
///
/// @param error in words
/// @return false where the file has no such frame or cannot be written, or the work is cancelled
bool writeFlacLength(const QString& path, FileWork& work, QString& error);
