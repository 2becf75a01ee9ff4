// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>

namespace platform {

/// For files that are the user's alone.
inline constexpr QFile::Permissions kPrivateFile = QFile::ReadOwner | QFile::WriteOwner;

/// Makes a folder, with its parents, into which only the user can look. One that is there becomes one, with the files
/// in it. On Windows the user's profile is private, and the folder as private as that.
///
/// @return whether the folder is there
bool makePrivateFolder(const QString& path);

} // namespace platform
