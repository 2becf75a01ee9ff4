#include "files/filerecordsfile.h"

#include "app/appidentity.h"
#include "app/sclogger.h"
#include "platform/files/disk_sync.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <utility>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

const auto kFileName = QStringLiteral("file_data.json");
const auto kPathKey = QStringLiteral("filepath");
const auto kPropertiesKey = QStringLiteral("properties");

/// More than a million records: nothing that the program has written is as large, and reading it would keep the program
/// from starting.
constexpr qint64 kMaxBytes = qint64{256} * 1024 * 1024;

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

/// What QSaveFile writes to before it takes the place of the file: the file's name, a dot and six letters at random. A
/// name that a human has given (".backup", ".Backup") is not taken for one.
bool isUnfinishedSave(const QString& name)
{
    const QString tail = name.mid(kFileName.size() + 1);
    const auto isLetter = [](QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); };
    const auto isUpper = [](QChar c) { return c.isUpper(); };
    const bool lettersOnly = tail.size() == 6 && std::all_of(tail.begin(), tail.end(), isLetter);
    return lettersOnly && tail != tail.toUpper() && std::any_of(tail.begin() + 1, tail.end(), isUpper);
}

/// Left behind where the process or the machine died during a save. One that is young may be another session's, at
/// work.
void removeUnfinishedSaves(const QDir& folder)
{
    const QDateTime old = QDateTime::currentDateTime().addDuration(-1min);
    const QFileInfoList files = folder.entryInfoList({kFileName + QLatin1String(".??????")}, QDir::Files);
    for (const QFileInfo& file : files) {
        if (isUnfinishedSave(file.fileName()) && file.lastModified() < old)
            QFile::remove(file.filePath());
    }
}

/// The file's text; null when it is too large or cannot be read to its end.
QByteArray contents(QFile& file)
{
    if (file.size() > kMaxBytes)
        return {};
    QByteArray text = file.readAll();
    return file.error() == QFileDevice::NoError ? text : QByteArray();
}

} // namespace

QString FileRecordsFile::path()
{
    return appidentity::dataFolder() + u'/' + kFileName;
}

bool FileRecordsFile::load(QList<FileRecord>& records)
{
    records.clear();
    removeUnfinishedSaves(QDir(appidentity::dataFolder()));
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly)) {
        SCLogger::debug(QStringLiteral("Could not open file for reading: %1").arg(path()));
        m_foreign = QFileInfo::exists(path());
        return false;
    }
    m_foreign = false;
    const QByteArray text = contents(file);
    const bool empty = file.size() == 0;
    file.close();
    const QJsonArray elements = parse(text, empty);
    // The elements that stay are written as they are.
    QJsonArray kept;
    for (const auto& element : elements) {
        FileRecord record = toRecord(element.toObject());
        if (!QFileInfo(record.filepath).isFile())
            continue;
        records.append(std::move(record));
        kept.append(element);
    }
    if (kept.size() == elements.size())
        return true;
    const bool written = write(kept);
    if (!written)
        SCLogger::debug(QStringLiteral("Could not open file for writing: %1").arg(path()));
    return written;
}

QJsonArray FileRecordsFile::parse(const QByteArray& text, bool empty)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    // An empty file holds nothing to keep.
    m_foreign = !document.isArray() && !empty;
    if (m_foreign)
        SCLogger::warning(QStringLiteral("The list of files cannot be read and starts empty (%1): %2")
                              .arg(document.isNull() ? error.errorString() : QStringLiteral("no array"), path()));
    return document.array();
}

bool FileRecordsFile::save(const QList<FileRecord>& records)
{
    QJsonArray elements;
    for (const FileRecord& record : records)
        elements.append(toObject(record));
    return write(elements);
}

bool FileRecordsFile::write(const QJsonArray& elements)
{
    const QByteArray text = QJsonDocument(elements).toJson(QJsonDocument::Indented);
    QDir().mkpath(appidentity::dataFolder());
    QSaveFile file(path());
    m_errorText.clear();
    if (!file.open(QIODevice::WriteOnly)) {
        m_errorText = file.errorString();
        return false;
    }
    // The commit by itself would notice neither that the buffer cannot be written out nor that the disk refuses it.
    const bool written = file.write(text) == text.size() && file.flush() && platform::syncToDisk(file.handle());
    if (!written) {
        m_errorText = file.error() != QFileDevice::NoError ? file.errorString() : QStringLiteral("the disk refuses it");
        return false;
    }
    // Only for a list that is wholly written is the other file moved.
    if (m_foreign && !setAside()) {
        m_errorText = QStringLiteral("the unreadable list that stands there cannot be set aside");
        return false;
    }
    if (!file.commit())
        m_errorText = file.errorString();
    return m_errorText.isEmpty();
}

bool FileRecordsFile::setAside()
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss"));
    const QString base = appidentity::dataFolder() + QStringLiteral("/file_data.unreadable_") + stamp;
    QString aside = base + QLatin1String(".json");
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = QStringLiteral("%1_%2.json").arg(base).arg(number);
    if (!QFile::rename(path(), aside))
        return false;
    SCLogger::warning(QStringLiteral("The unreadable list of files is kept as %1").arg(aside));
    m_foreign = false;
    return true;
}
