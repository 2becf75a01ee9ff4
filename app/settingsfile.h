#pragma once

#include <QSettings>

class QIODevice;

/// The settings file of systems without a registry: INI syntax in UTF-8, every group under the name it has. Qt's own
/// INI container gives the group "general" a meaning of its own and does not find "general/language" after a restart.
///
///     [general]
///     firstRun=false
///     language="en_US"
///
/// The part of a key before its first "/" is the group. Unquoted true and false are booleans, everything else is a
/// string, written as in JSON. A value typed by hand may go without quotes: it is taken as it stands, without the
/// blanks around it. Lines that begin with ";" or "#" are comments. Keys are plain words: "=", brackets and line ends
/// in them are not escaped.
namespace settingsfile {

/// What is longer than this many bytes was not written by this program.
inline constexpr qint64 kMaximumSize = qint64{1024} * 1024;

/// Reads values from a file opened for reading. Lines that are no setting are passed over; of a key given twice the
/// last value counts.
///
/// @return false when the file is no settings file at all: binary, or larger than kMaximumSize.
bool read(QIODevice& device, QSettings::SettingsMap& values);

/// Writes values, ordered by key.
///
/// @return false when not everything could be written.
bool write(QIODevice& device, const QSettings::SettingsMap& values);

} // namespace settingsfile
