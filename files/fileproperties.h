// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Keys of a record's properties.
namespace fileproperties {

/// "video", "audio" or "screenshot".
inline const QString kType = QStringLiteral("type");
/// Local time as Qt::ISODate.
inline const QString kDateAdded = QStringLiteral("dateAdded");
/// True while a recording is not finished.
inline const QString kUnfinished = QStringLiteral("unfinished");
/// True for a recording that could not be finished.
inline const QString kIncomplete = QStringLiteral("incomplete");

// See FileDetails.
inline const QString kSize = QStringLiteral("sizeBytes");
inline const QString kDuration = QStringLiteral("durationMs");
inline const QString kMissing = QStringLiteral("missing");
inline const QString kUnreadable = QStringLiteral("unreadable");

} // namespace fileproperties
