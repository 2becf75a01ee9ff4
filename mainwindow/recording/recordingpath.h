// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/recordingformat.h"

#include <QString>

class QDateTime;

/// Folder, a name that both systems accept, and the format's extension. A name that is taken gets " (2)", " (3)", ...
/// Creates nothing.
class RecordingPath
{
public:
    /// @param typedName with or without the extension; if empty, the name is made from now (local time)
    RecordingPath(const QString& folder, const QString& typedName, RecordingFormat format, const QDateTime& now);

    QString withoutExtension() const { return m_withoutExtension; }

    QString full() const;

private:
    QString m_withoutExtension;
    QString m_extension;
};

/// Without reserved and control characters, lone surrogates, blanks around it, dots at its end and Windows' device
/// names; 240 bytes at most. Empty when nothing is left ("..", "CON").
QString cleanedRecordingName(const QString& typedName);

/// For example "Recording_2024_05_01_13-07-09".
QString defaultRecordingName(const QDateTime& now);

/// Base, or base with the first number whose path, with a dot and the extension, names nothing.
QString firstFreePath(const QString& base, const QString& extension);
