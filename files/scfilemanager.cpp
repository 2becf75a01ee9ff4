#include "files/scfilemanager.h"

#include "app/sclogger.h"
#include "files/fileitemdelegate.h"

#include <QAbstractItemView>
#include <QDateTime>
#include <QStandardItemModel>

#include <utility>

#include <algorithm>
#include <iterator>

namespace {

const auto kType = QStringLiteral("type");
const auto kDateAdded = QStringLiteral("dateAdded");

/// For the algorithms. A record without a type has the empty one.
auto isOfType(const QString& type)
{
    return [&type](const FileRecord& record) { return record.properties.value(kType).toString() == type; };
}

} // namespace

SCFileManager::SCFileManager(QObject* parent)
    : QObject(parent), m_model(new QStandardItemModel(this)), m_delegate(new FileItemDelegate(this))
{
    load();
}

SCFileManager::~SCFileManager()
{
    // Whoever listened is going as well.
    blockSignals(true);
    save();
}

bool SCFileManager::load()
{
    return m_file.load(m_files);
}

bool SCFileManager::save()
{
    const bool saved = m_file.save(m_files);
    reportSave(saved);
    return saved;
}

void SCFileManager::reportSave(bool saved)
{
    const bool failedBefore = std::exchange(m_saveFails, !saved);
    if (saved)
        return;
    SCLogger::error(QStringLiteral("The list of files could not be saved to %1, it stays in memory: %2")
                        .arg(FileRecordsFile::path(), m_file.errorText()));
    if (!failedBefore)
        emit error(tr("The list of files could not be saved: %1").arg(m_file.errorText()));
}

QList<FileRecord> SCFileManager::filesByType(const QString& type) const
{
    QList<FileRecord> found;
    std::copy_if(m_files.begin(), m_files.end(), std::back_inserter(found), isOfType(type));
    return found;
}

qsizetype SCFileManager::count(const QString& type) const
{
    return std::count_if(m_files.begin(), m_files.end(), isOfType(type));
}

void SCFileManager::addFile(const QString& path, const QString& type)
{
    m_files.prepend({path, {{kType, type}, {kDateAdded, QDateTime::currentDateTime().toString(Qt::ISODate)}}});
    save();
}

bool SCFileManager::removeFile(const QString& path)
{
    const bool removed = takeOut(path);
    if (removed)
        save();
    return removed;
}

bool SCFileManager::takeOut(const QString& path)
{
    const auto found = std::find_if(m_files.cbegin(), m_files.cend(),
                                    [&path](const FileRecord& record) { return record.filepath == path; });
    if (found == m_files.cend())
        return false;
    m_files.erase(found);
    return true;
}

void SCFileManager::reverseFileOrder()
{
    if (m_view == nullptr || m_files.isEmpty())
        return;
    std::reverse(m_files.begin(), m_files.end());
    rebuildView();
    save();
}
