#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QJsonArray;

/// A file that the program has produced.
struct FileRecord
{
    /// Absolute path, as the file was produced: the record's identity, compared exactly.
    QString filepath;
    /// Open-ended. "type" is "video", "audio" or "screenshot"; "dateAdded" is the local time as Qt::ISODate.
    QVariantMap properties;

    bool operator==(const FileRecord&) const = default;
};

/// The records of all files that the program has produced, and "file_data.json" in the application-data folder, which
/// keeps them: a JSON array with one object for each record, in order. A file may have several records.
///
/// Whatever happens to the process or the disk during a save, the file holds the old list or the new one. Something
/// else under its name (a damaged list, another program's file) is renamed before the first save.
class FileStore
{
public:
    /// Absolute path of the file.
    static QString path();

    const QList<FileRecord>& records() const { return m_records; }
    QList<FileRecord> ofType(const QString& type) const;
    qsizetype count(const QString& type) const;

    /// Puts a record with the present time in front of the others.
    void add(const QString& path, const QString& type);

    /// Removes the first record of each path, once for each time that it is listed. Returns whether there was any.
    bool remove(const QStringList& paths);

    void reverse();

    /// Replaces the records by what the file holds. Records whose files are gone are dropped, also from the file.
    ///
    /// @return false when the file cannot be opened, or not be rewritten. Anything that is no list reads as an empty
    ///         one.
    bool load();

    /// Writes the records. On failure the file stays as it was, and errorText() has the reason.
    bool save();

    /// Why the last save() failed, for log and user; empty when it did not.
    const QString& errorText() const { return m_errorText; }

private:
    QJsonArray parse(const QByteArray& text, bool isEmpty);
    bool write(const QJsonArray& elements);
    bool renameForeignFile();

    QList<FileRecord> m_records;
    /// The file is not a list of records.
    bool m_isForeign = false;
    QString m_errorText;
};
