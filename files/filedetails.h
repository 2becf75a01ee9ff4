// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantMap>

#include <optional>

/// What has been read from a file, kept in its record's properties "sizeBytes", "durationMs", "unreadable" and
/// "missing". A property of another type than these have is somebody else's: it reads as unknown and stays.
struct FileDetails
{
    static FileDetails of(const QVariantMap& properties);

    /// @return whether a property has changed
    bool writeTo(QVariantMap& properties) const;

    bool operator==(const FileDetails&) const = default;

    std::optional<qint64> sizeBytes;
    /// Of a recording.
    std::optional<qint64> durationMs;
    /// A recording that no program plays.
    bool isUnreadable = false;
    /// There was no file.
    bool isMissing = false;
};
