#pragma once

#include "files/filerecord.h"

#include <QByteArray>
#include <QList>

#include <optional>

/// The records as "file_data.json" holds them: what QJsonDocument's indented form gives for the array of their objects,
/// byte for byte, in a tenth of the time that building those objects would take. Every change writes the whole list.
QByteArray toJsonText(const QList<FileRecord>& records);

/// The records of a text that toJsonText() has written, for the start of the program, which waits for them. Nothing for
/// any other text, be it JSON or not, and for records whose properties are not all strings or need escapes: that is
/// QJsonDocument's to read.
std::optional<QList<FileRecord>> fromJsonText(const QByteArray& text);
