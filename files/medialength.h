// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>
#include <optional>

class FileWork;

struct MediaLength
{
    /// Unknown without one, which may be a passing obstacle.
    std::optional<std::chrono::milliseconds> length;
    /// There is nothing in the file that could be played.
    bool isUnreadable = false;
};

/// How long a recording of this program plays, from the file's head where that says it, otherwise from its packets,
/// which takes as long as reading it. On Windows as the system's own reader has it, which never says that a file is
/// unreadable; FLV and GIF, which that does not know, are read here. Does not change the file. Any thread.
MediaLength mediaLength(const QString& path, FileWork& work);
