// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/recordingformat.h"

#include <QString>

class QDateTime;

/// The path of one recording: the folder, a name that both systems accept, and the extension of the format. A name that
/// is taken when this is made gets " (2)", " (3)", ...; nothing is created.
class RecordingPath
{
public:
    /// @param folder    absolute; need not exist.
    /// @param typedName possibly empty: then the name is made from now, local time.
    RecordingPath(const QString& folder, const QString& typedName, RecordingFormat format, const QDateTime& now);

    QString withoutExtension() const { return m_withoutExtension; }

    QString full() const;

private:
    QString m_withoutExtension;
    QString m_extension;
};

/// The name without reserved and control characters, halves of surrogate pairs, blanks around it, dots at its end and
/// Windows' device names, cut to 255 bytes with a number and an extension. Empty when nothing is left ("..", "CON").
QString cleanedRecordingName(const QString& typedName);

/// "Recording_" and the time, for example "Recording_2024_05_01_13-07-09".
QString defaultRecordingName(const QDateTime& now);

/// Makes the folder with its missing parents. False when that failed.
bool ensureFolder(const QString& folder);
