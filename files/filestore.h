// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QJsonArray;

/// A file that the program has produced.
struct FileRecord
{
    /// Absolute; the record's identity, compared exactly.
    QString filepath;
    /// "type" is "video", "audio" or "screenshot", "dateAdded" the local time as Qt::ISODate. Others are kept.
    QVariantMap properties;

    bool operator==(const FileRecord&) const = default;
};

/// The records, and "file_data.json" in the application-data folder, which keeps them as a JSON array. A path may have
/// several records.
///
/// If the process or the disk fails during a save, the file holds the old list or the new one. A damaged list, or
/// another program's file of that name, is renamed before the first save.
class FileStore
{
public:
    static QString path();

    const QList<FileRecord>& records() const { return m_records; }
    QList<FileRecord> ofType(const QString& type) const;
    qsizetype count(const QString& type) const;

    /// Prepends a record with the present time.
    void add(const QString& path, const QString& type);

    /// Removes one record for each entry of paths, the first of its path. False when there was none.
    bool remove(const QStringList& paths);

    void reverse();

    /// Reads the file. Records of files that are gone are dropped, also from the file. What is no list reads as empty.
    ///
    /// @return false when the file cannot be opened or rewritten
    bool load();

    bool save();
    /// Why the last save() failed; empty when it did not.
    const QString& errorText() const { return m_errorText; }

private:
    QJsonArray parse(const QByteArray& text, bool isEmpty);
    bool write(const QJsonArray& elements);
    bool renameForeignFile();

    QList<FileRecord> m_records;
    bool m_isForeign = false;
    QString m_errorText;
};
