// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filestore.h"

#include "app/appidentity.h"
#include "app/sclogger.h"
#include "app/shownpath.h"
#include "files/fileproperties.h"
#include "files/mp4file.h"
#include "platform/files/disk_sync.h"
#include "platform/files/private_files.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <utility>

#include <algorithm>
#include <chrono>
#include <iterator>

using namespace fileproperties;
using namespace std::chrono_literals;

namespace {

const auto kFileName = QStringLiteral("file_data.json");
const auto kPathKey = QStringLiteral("filepath");
const auto kPropertiesKey = QStringLiteral("properties");

/// More than a million records. Reading more would keep the program from starting.
constexpr qint64 kMaxBytes = qint64{256} * 1024 * 1024;

/// For algorithms. A record without a type has the empty one.
auto isOfType(const QString& type)
{
    return [&type](const FileRecord& record) { return record.properties.value(kType).toString() == type; };
}

FileRecord toRecord(const QJsonObject& object)
{
    return {object.value(kPathKey).toString(), object.value(kPropertiesKey).toObject().toVariantMap()};
}

QJsonObject toObject(const FileRecord& record)
{
    // A fifth faster than QJsonObject::fromVariantMap() in a list of 10,000 records.
    QJsonObject properties;
    for (auto property = record.properties.begin(); property != record.properties.end(); ++property)
        properties.insert(property.key(), QJsonValue::fromVariant(property.value()));
    return {{kPathKey, record.filepath}, {kPropertiesKey, properties}};
}

/// QSaveFile's temporary files have the file's name, a dot and six random letters. Names that people give (".backup",
/// ".Backup") do not count.
bool isUnfinishedSave(const QString& name)
{
    const QString tail = name.mid(kFileName.size() + 1);
    const auto isLetter = [](QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); };
    const auto isUpper = [](QChar c) { return c.isUpper(); };
    const bool lettersOnly = tail.size() == 6 && std::all_of(tail.begin(), tail.end(), isLetter);
    return lettersOnly && tail != tail.toUpper() && std::any_of(tail.begin() + 1, tail.end(), isUpper);
}

/// Files of saves that were killed. A young file may belong to another session.
void removeUnfinishedSaves(const QDir& folder)
{
    const QDateTime old = QDateTime::currentDateTime().addDuration(-1min);
    const QFileInfoList files = folder.entryInfoList({kFileName + QLatin1String(".??????")}, QDir::Files);
    for (const QFileInfo& file : files) {
        if (isUnfinishedSave(file.fileName()) && file.lastModified() < old)
            QFile::remove(file.filePath());
    }
}

/// Null when the file is too large or a read fails.
QByteArray contents(QFile& file)
{
    if (file.size() > kMaxBytes)
        return {};
    QByteArray text = file.readAll();
    return file.error() == QFileDevice::NoError ? text : QByteArray();
}

} // namespace

bool FileRecord::isUnfinished() const
{
    return properties.value(kUnfinished).toBool();
}

bool FileRecord::isMedia() const
{
    const QString type = properties.value(kType).toString();
    return type == QLatin1String("video") || type == QLatin1String("audio");
}

QString FileStore::path()
{
    return appidentity::dataFolder() + u'/' + kFileName;
}

QList<FileRecord> FileStore::ofType(const QString& type) const
{
    QList<FileRecord> found;
    std::copy_if(m_records.begin(), m_records.end(), std::back_inserter(found), isOfType(type));
    return found;
}

qsizetype FileStore::count(const QString& type) const
{
    return std::count_if(m_records.begin(), m_records.end(), isOfType(type));
}

void FileStore::add(const QString& path, const QString& type, bool isUnfinished)
{
    FileRecord record{path, {{kType, type}, {kDateAdded, QDateTime::currentDateTime().toString(Qt::ISODate)}}};
    if (isUnfinished)
        record.properties.insert(kUnfinished, true);
    m_records.prepend(record);
}

QStringList FileStore::unfinished() const
{
    QStringList paths;
    for (const FileRecord& record : m_records)
        if (record.isUnfinished())
            paths.append(record.filepath);
    return paths;
}

bool FileStore::setFinished(const QString& path, bool isWhole)
{
    bool isFound = false;
    for (FileRecord& record : m_records) {
        if (record.filepath != path || record.properties.remove(kUnfinished) == 0)
            continue;
        isFound = true;
        if (!isWhole && !record.properties.contains(kIncomplete))
            record.properties.insert(kIncomplete, true);
    }
    return isFound;
}

bool FileStore::setDetails(const QHash<QString, FileDetails>& details)
{
    bool hasChanged = false;
    for (FileRecord& record : m_records) {
        const auto found = details.constFind(record.filepath);
        if (found != details.constEnd())
            hasChanged |= found->writeTo(record.properties);
    }
    return hasChanged;
}

void FileStore::move(const QString& from, const QString& to)
{
    for (FileRecord& record : m_records) {
        if (record.filepath != from)
            continue;
        record.filepath = to;
        record.properties.insert(kUnfinished, true);
    }
}

bool FileStore::remove(const QStringList& paths)
{
    QHash<QString, int> timesToRemove;
    for (const QString& path : paths)
        ++timesToRemove[path];
    return m_records.removeIf([&timesToRemove](const FileRecord& record) {
        const auto found = timesToRemove.find(record.filepath);
        return found != timesToRemove.end() && (*found)-- > 0;
    }) > 0;
}

void FileStore::reverse()
{
    std::reverse(m_records.begin(), m_records.end());
}

bool FileStore::load()
{
    m_records.clear();
    removeUnfinishedSaves(QDir(appidentity::dataFolder()));
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly)) {
        SCLogger::debug(QStringLiteral("Could not open file for reading: %1").arg(path()));
        m_isForeign = QFileInfo::exists(path());
        return false;
    }
    m_isForeign = false;
    const QByteArray text = contents(file);
    const bool isEmpty = file.size() == 0;
    file.close();
    const QJsonArray elements = parse(text, isEmpty);
    // The elements that stay are written as they are.
    QJsonArray kept;
    for (const auto& element : elements) {
        FileRecord record = toRecord(element.toObject());
        if (!QFileInfo(record.filepath).isFile()) {
            if (record.isUnfinished())
                QFile::remove(unfinishedMp4Path(record.filepath));
            continue;
        }
        m_records.append(std::move(record));
        kept.append(element);
    }
    if (kept.size() == elements.size())
        return true;
    const bool written = write(kept);
    if (!written)
        SCLogger::debug(QStringLiteral("Could not open file for writing: %1").arg(path()));
    return written;
}

QJsonArray FileStore::parse(const QByteArray& text, bool isEmpty)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    // An empty file is not worth keeping.
    m_isForeign = !document.isArray() && !isEmpty;
    if (m_isForeign)
        SCLogger::warning(
            QStringLiteral("The list of files cannot be read and starts empty (%1): %2")
                .arg(document.isNull() ? error.errorString() : QStringLiteral("no array"), shownPath(path())));
    return document.array();
}

bool FileStore::save()
{
    QJsonArray elements;
    for (const FileRecord& record : std::as_const(m_records))
        elements.append(toObject(record));
    return write(elements);
}

bool FileStore::write(const QJsonArray& elements)
{
    const QByteArray text = QJsonDocument(elements).toJson(QJsonDocument::Indented);
    platform::makePrivateFolder(appidentity::dataFolder());
    QSaveFile file(path());
    m_errorText.clear();
    if (!file.open(QIODevice::WriteOnly)) {
        m_errorText = file.errorString();
        return false;
    }
    file.setPermissions(platform::kPrivateFile);
    // commit() alone reports neither a failing flush nor a failing disk.
    const bool written = file.write(text) == text.size() && file.flush() && platform::syncToDisk(file.handle());
    if (!written) {
        m_errorText = file.error() != QFileDevice::NoError ? file.errorString() : QStringLiteral("the disk refuses it");
        return false;
    }
    // The new list is complete.
    if (m_isForeign && !renameForeignFile()) {
        m_errorText = QStringLiteral("the unreadable list that is there cannot be renamed");
        return false;
    }
    if (!file.commit())
        m_errorText = file.errorString();
    return m_errorText.isEmpty();
}

bool FileStore::renameForeignFile()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
    const QString base = appidentity::dataFolder() + QStringLiteral("/file_data.unreadable_") + stamp;
    QString newName = base + QLatin1String(".json");
    for (int number = 2; QFileInfo::exists(newName); ++number)
        newName = QStringLiteral("%1_%2.json").arg(base).arg(number);
    if (!QFile::rename(path(), newName))
        return false;
    SCLogger::warning(QStringLiteral("The unreadable list of files is kept as %1").arg(shownPath(newName)));
    m_isForeign = false;
    return true;
}
