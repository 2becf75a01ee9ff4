#pragma once

#include <QSettings>

class QIODevice;

/// The settings file of systems without a registry: INI syntax in UTF-8, every group under the name it has.
///
/// The toolkit's own INI container cannot be used: it gives the group "general" a meaning of its own and finds
/// "general/language" no more after a restart.
///
///     [general]
///     firstRun=false
///     language="en_US"
///
/// The part of a key before its first "/" is the group; keys without one come first. Unquoted true and false are
/// booleans, everything else is a string. Strings are written in double quotes, where a backslash begins an escape:
/// \\ \" \n \r \t and \u with four hexadecimal digits of a UTF-16 code unit. A value typed by hand may go without
/// quotes and is then taken as it stands, without the blanks around it. Lines that begin with ";" or "#" are comments.
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
