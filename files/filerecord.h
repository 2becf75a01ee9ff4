#pragma once

#include <QString>
#include <QVariantMap>

/// A file that the program has produced.
struct FileRecord
{
    /// Absolute path, as the file was produced: the record's identity, compared exactly.
    QString filepath;
    /// Open-ended. "type" is "video", "audio" or "screenshot"; "dateAdded" is the local time as Qt::ISODate.
    QVariantMap properties;

    bool operator==(const FileRecord&) const = default;
};
