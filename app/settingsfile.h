// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSettings>

class QIODevice;

/// INI syntax in UTF-8, every group under its own name; Qt's INI container does not find the group "general" again.
///
///     [general]
///     firstRun=false
///     language="en_US"
///
/// Unquoted true and false are booleans, everything else strings as in JSON, also without quotes. ";" and "#" begin
/// comments. Nothing in a key is escaped.
namespace settingsfile {

/// In bytes; a longer file was not written by this program.
inline constexpr qint64 kMaximumSize = qint64{1024} * 1024;

/// Skips what is no setting; the last value of a key counts. False when the file is binary or too long.
bool read(QIODevice& device, QSettings::SettingsMap& values);

/// Ordered by key; false when not everything was written.
bool write(QIODevice& device, const QSettings::SettingsMap& values);

} // namespace settingsfile
