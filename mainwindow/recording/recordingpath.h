#pragma once

#include "engine/recordingformat.h"

#include <QString>

class QDateTime;

/// Where one recording goes: the folder, a name that both systems can hold, and the extension of the format.
///
/// An earlier file is never overwritten: where the file exists already, " (2)", " (3)", ... comes before the extension.
/// The file system is looked at once, on construction; nothing is created.
class RecordingPath
{
public:
    /// @param folder    the save folder, absolute; need not exist yet.
    /// @param typedName what the user typed, possibly empty (then the name is made from now, local time).
    RecordingPath(const QString& folder, const QString& typedName, RecordingFormat format, const QDateTime& now);

    /// The folder, "/", and the name: what the engine takes, which adds the extension itself.
    QString withoutExtension() const { return m_withoutExtension; }

    /// The complete path of the file.
    QString full() const;

private:
    QString m_withoutExtension;
    QString m_extension;
};

/// The typed name without what a file name cannot hold on Windows or Linux: separators and the characters that Windows
/// reserves, control characters, halves of surrogate pairs, blanks around it, dots at its end, Windows' device names.
/// Shortened so that a number and an extension still fit into 255 bytes. Empty when nothing is left ("..", "CON").
QString cleanedRecordingName(const QString& typedName);

/// "Recording_" and the time, for example "Recording_2024_05_01_13-07-09".
QString defaultRecordingName(const QDateTime& now);

/// Makes the folder with its missing parents.
/// @return whether it exists now.
bool ensureFolder(const QString& folder);
