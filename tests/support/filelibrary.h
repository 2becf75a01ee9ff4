// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A folder for the list of files that no other test and no user shares; it goes with the object. Make it after the
/// program's identity has been applied.
class LibraryRefuge
{
public:
    LibraryRefuge();
    /// The path of another process's refuge, for a process that this one starts.
    explicit LibraryRefuge(const QString& name);
    ~LibraryRefuge();
    LibraryRefuge(const LibraryRefuge&) = delete;
    LibraryRefuge& operator=(const LibraryRefuge&) = delete;

    const QString& name() const { return m_name; }

    /// Takes away everything that lies there.
    static void clear();

private:
    QString m_name;
    bool m_owned;
};

/// The list of files as it lies on the disk, seen from outside.
namespace filelibrary {

QString path();
void write(const QByteArray& text);
QByteArray text();

/// The "filepath" of every element.
QStringList paths();

/// The files beside the list, by name.
QStringList neighbours();

} // namespace filelibrary

/// A folder with files for the list to hold.
class ProducedFiles
{
public:
    /// Makes an empty file and returns its absolute path.
    QString add(const QString& name);
    /// A file of that size that says it plays for so long: the head of a FLAC file, whatever its name.
    QString addRecording(const QString& name, int seconds, qint64 bytes);
    QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};
