#pragma once

#include "files/filerecord.h"

#include <QByteArray>
#include <QList>
#include <QString>

class QJsonArray;

/// "file_data.json" in the application-data folder, where the list of files outlives the program: a JSON array with one
/// object for each record, in the list's order.
///
/// Whatever happens to the process or the disk while it is written, the file holds the list as it was or as it is to
/// be. Something else that stands under its name (a damaged list, another program's file) is set aside before it is
/// written over.
class FileRecordsFile
{
public:
    /// Absolute path of the file.
    static QString path();

    /// Replaces records by what the file holds. Records whose files are gone are left out, and the file is written anew
    /// without them.
    ///
    /// @return false when the file cannot be opened, or not be rewritten. Anything that is no list reads as an empty
    ///         one.
    bool load(QList<FileRecord>& records);

    /// Writes the list. On failure the file is what it was, and errorText() says why.
    bool save(const QList<FileRecord>& records);

    /// Why the last save() failed, for the log and the user; empty when it did not.
    const QString& errorText() const { return m_errorText; }

private:
    QJsonArray parse(const QByteArray& text, bool empty);
    bool write(const QJsonArray& elements);
    bool setAside();

    /// What stands under the file's name is not a list.
    bool m_foreign = false;
    QString m_errorText;
};
