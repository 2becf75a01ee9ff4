// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/filedetails.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QJsonArray;

struct FileRecord
{
    /// Absolute; identifies the record, compared exactly.
    QString filepath;
    /// See fileproperties.h; others are kept.
    QVariantMap properties;

    bool isUnfinished() const;
    /// A recording.
    bool isMedia() const;

    bool operator==(const FileRecord&) const = default;
};

/// The records, kept as a JSON array in "file_data.json" of the application-data folder. A path may have several. A
/// failing save leaves the old list or the new one. A damaged list, or another program's file, is renamed before the
/// first save.
class FileStore
{
public:
    static QString path();

    const QList<FileRecord>& records() const { return m_records; }
    QList<FileRecord> ofType(const QString& type) const;
    qsizetype count(const QString& type) const;

    void add(const QString& path, const QString& type, bool isUnfinished = false);

    QStringList unfinished() const;
    /// Every record of the path. False when there was none.
    bool setFinished(const QString& path, bool isWhole);

    /// By path. False when nothing has changed.
    bool setDetails(const QHash<QString, FileDetails>& details);

    /// Every record of the path gets the other one, and is unfinished.
    void move(const QString& from, const QString& to);

    /// The first of its path for each entry. False when there was none.
    bool remove(const QStringList& paths);

    void reverse();

    /// Drops the records of missing files, also from the file. What is no list reads as empty.
    /// @return false when the file cannot be opened or rewritten
    bool load();

    bool save();
    /// Of the last save(); empty after success.
    const QString& errorText() const { return m_errorText; }

private:
    QJsonArray parse(const QByteArray& text, bool isEmpty);
    bool write(const QJsonArray& elements);
    bool renameForeignFile();

    QList<FileRecord> m_records;
    bool m_isForeign = false;
    QString m_errorText;
};
