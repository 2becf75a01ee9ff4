// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSettings>

class QIODevice;

/// The settings file of systems without a registry: INI syntax in UTF-8, every group under the name it has. Qt's own
/// INI container does not find the group "general" again after a restart.
///
///     [general]
///     firstRun=false
///     language="en_US"
///
/// Unquoted true and false are booleans, everything else is a string, written as in JSON; typed by hand it may go
/// without quotes. Lines that begin with ";" or "#" are comments. Nothing in a key is escaped.
namespace settingsfile {

/// What is longer than this many bytes was not written by this program.
inline constexpr qint64 kMaximumSize = qint64{1024} * 1024;

/// Reads values from a file opened for reading. Lines that are no setting are skipped; the last value of a key counts.
///
/// @return false when the file is binary or larger than kMaximumSize.
bool read(QIODevice& device, QSettings::SettingsMap& values);

/// Writes values, ordered by key; false when not everything could be written.
bool write(QIODevice& device, const QSettings::SettingsMap& values);

} // namespace settingsfile
