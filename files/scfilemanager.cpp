// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/scfilemanager.h"

#include "app/sclogger.h"
#include "app/shownpath.h"
#include "files/filedetailsreader.h"
#include "files/fileitemdelegate.h"
#include "files/recordingfinisher.h"
#include "platform/files/file_manager.h"
#include "widgets/desktopservices.h"
#include "widgets/messagebox.h"

#include <QAbstractItemView>
#include <QFile>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QStandardItemModel>

#include <utility>

#include <algorithm>
#include <chrono>

namespace {

constexpr char kFilterProperty[] = "currentFilter";
const auto kDeleteButtonName = QStringLiteral("deleteButton");

QString pathOf(const QModelIndex& index)
{
    return index.data(SCFileManager::kPathRole).toString();
}

void prepare(QAbstractItemView& view)
{
    view.setMouseTracking(true);
    view.setFocusPolicy(Qt::NoFocus);
    view.setFrameShape(QFrame::NoFrame);
    view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.viewport()->setAttribute(Qt::WA_Hover);
    view.setEditTriggers(QAbstractItemView::NoEditTriggers);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
}

bool isMouseEvent(QEvent::Type type)
{
    return type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick || type == QEvent::MouseMove ||
           type == QEvent::MouseButtonRelease;
}

bool isOnIcon(const QAbstractItemView& view, const QPoint& position)
{
    const QModelIndex index = view.indexAt(position);
    const QRect row = view.visualRect(index);
    using Delegate = SCFileManager::FileItemDelegate;
    return index.isValid() &&
           (Delegate::folderRect(row).contains(position) || Delegate::deleteRect(row).contains(position));
}

} // namespace

SCFileManager::SCFileManager(QObject* parent)
    : QObject(parent)
    , m_model(new QStandardItemModel(this))
    , m_delegate(new FileItemDelegate(this))
    , m_finisher(new RecordingFinisher(this))
    , m_reader(new FileDetailsReader(this))
{
    connect(m_finisher, &RecordingFinisher::finished, this, &SCFileManager::onFinished);
    connect(m_finisher, &RecordingFinisher::postponed, this, &SCFileManager::onPostponed);
    connect(m_reader, &FileDetailsReader::read, this, &SCFileManager::onDetailsRead);
    connect(m_reader, &FileDetailsReader::finished, this, &SCFileManager::onDetailsSettled);
    load();
    finishRecordings();
    readDetails([](const FileRecord&) { return true; });
}

SCFileManager::~SCFileManager()
{
    // The receivers are being destroyed as well.
    blockSignals(true);
    save();
}

bool SCFileManager::save()
{
    const bool saved = m_store.save();
    m_hasUnsavedDetails = m_hasUnsavedDetails && !saved;
    const bool failedBefore = std::exchange(m_saveFails, !saved);
    if (saved)
        return true;
    SCLogger::error(QStringLiteral("The list of files could not be saved to %1, it stays in memory: %2")
                        .arg(shownPath(FileStore::path()), m_store.errorText()));
    if (!failedBefore)
        emit error(tr("The list of files could not be saved: %1").arg(m_store.errorText()));
    return false;
}

void SCFileManager::addFile(const QString& path, const QString& type)
{
    m_store.add(path, type, path == m_fileInUse);
    save();
    readDetailsOf(path);
}

void SCFileManager::setFileInUse(const QString& path)
{
    m_fileInUse = path;
    if (m_fileInUse.isEmpty()) {
        finishRecordings();
        readMissingDetails();
    } else {
        m_recordedFiles.insert(path);
        m_finisher->cancelAll();
        m_reader->cancelAll();
    }
    updateRows();
}

void SCFileManager::finishRecordings()
{
    const QStringList paths = m_store.unfinished();
    for (const QString& path : paths)
        if (!isInUse(path))
            m_finisher->add(path, m_recordedFiles.contains(path) ? RecordingFinisher::Recorder::ThisRun
                                                                 : RecordingFinisher::Recorder::Other);
}

void SCFileManager::moveFile(const QString& from, const QString& to)
{
    m_filesBeingSaved.append(to);
    m_recordedFiles.insert(to);
    m_store.move(from, to);
    save();
    if (m_view != nullptr)
        rebuildView();
}

void SCFileManager::setFileSaved(const QString& path)
{
    m_filesBeingSaved.removeOne(path);
    // A recording needs disk and processor for itself.
    if (m_fileInUse.isEmpty())
        finishRecordings();
}

/// The recording is over, and nobody has said so. What takes longer is left to the next start.
void SCFileManager::onDisplayLoss()
{
    constexpr std::chrono::seconds kLimit{3};
    m_fileInUse.clear();
    finishRecordings();
    m_finisher->finishWithin(kLimit);
}

void SCFileManager::onFinished(const QString& path, bool isWhole)
{
    if (isInUse(path) || !m_store.setFinished(path, isWhole))
        return;
    save();
    updateRows();
    readDetailsOf(path);
}

void SCFileManager::onPostponed(const QString& path)
{
    if (isInUse(path))
        return;
    updateRows();
    readDetailsOf(path);
}

/// A file that is written to, or about to be, has to wait.
void SCFileManager::readDetails(const std::function<bool(const FileRecord&)>& isWanted)
{
    if (!m_fileInUse.isEmpty())
        return;
    QList<FileDetailsReader::Request> requests;
    for (const FileRecord& record : files()) {
        if (isWanted(record) && progressOf(record) == FileProgress::None && !isInUse(record.filepath))
            requests.append({record.filepath, record.isMedia(), FileDetails::of(record.properties)});
    }
    m_reader->add(requests);
}

/// While a file is in use, once it is no more.
void SCFileManager::readDetailsOf(const QString& path)
{
    if (!m_fileInUse.isEmpty())
        m_toRead.insert(path);
    readDetails([&path](const FileRecord& record) { return record.filepath == path; });
}

void SCFileManager::readMissingDetails()
{
    readDetails([wanted = std::exchange(m_toRead, {})](const FileRecord& record) {
        const FileDetails details = FileDetails::of(record.properties);
        return wanted.contains(record.filepath) || !details.sizeBytes ||
               (record.isMedia() && !details.durationMs && !details.isUnreadable);
    });
}

void SCFileManager::onDetailsRead(const QHash<QString, FileDetails>& details)
{
    if (!m_store.setDetails(details))
        return;
    m_hasUnsavedDetails = true;
    updateRows();
}

/// Of many files they come for minutes, and can be read again.
void SCFileManager::onDetailsSettled()
{
    if (m_hasUnsavedDetails)
        save();
}

FileProgress SCFileManager::progressOf(const FileRecord& record) const
{
    if (!record.isUnfinished())
        return FileProgress::None;
    if (record.filepath == m_fileInUse)
        return FileProgress::BeingRecorded;
    const bool isAtWork = isInUse(record.filepath) || m_finisher->has(record.filepath);
    return isAtWork ? FileProgress::BeingFinished : FileProgress::None;
}

/// The rows are those of the records, but for records that are newer than the last setupView().
void SCFileManager::updateRows()
{
    if (m_view == nullptr)
        return;
    const QList<FileRecord> shown = shownRecords();
    auto record = shown.begin();
    for (int number = 0; number < m_model->rowCount(); ++number) {
        auto* const row = static_cast<FileRow*>(m_model->item(number));
        const QString path = row->data(kPathRole).toString();
        record = std::find_if(record, shown.end(), [&path](const FileRecord& one) { return one.filepath == path; });
        if (record == shown.end())
            return;
        row->update(*record, progressOf(*record));
        ++record;
    }
}

bool SCFileManager::removeFile(const QString& path)
{
    const bool removed = m_store.remove({path});
    if (removed)
        save();
    return removed;
}

void SCFileManager::reverseFileOrder()
{
    if (m_view == nullptr || files().isEmpty())
        return;
    m_store.reverse();
    rebuildView();
    save();
}

void SCFileManager::setupView(QAbstractItemView* view, const QString& filter)
{
    if (view == nullptr)
        return;
    m_view = view;
    m_model->clear();
    view->setModel(m_model);
    view->setItemDelegate(m_delegate);
    prepare(*view);
    view->viewport()->removeEventFilter(this);
    view->viewport()->installEventFilter(this);
    view->setProperty(kFilterProperty, filter);
    // All at once, because a view lays itself out for every insertion.
    QList<QStandardItem*> rows;
    const QList<FileRecord> shown = shownRecords();
    rows.reserve(shown.size());
    for (const FileRecord& record : shown)
        rows.append(new FileRow(record, progressOf(record)));
    m_model->invisibleRootItem()->appendRows(rows);
    view->removeEventFilter(this);
    view->installEventFilter(this);
}

/// Of the bound view.
QList<FileRecord> SCFileManager::shownRecords() const
{
    const QString filter = m_view->property(kFilterProperty).toString();
    return filter.isEmpty() ? files() : filesByType(filter);
}

void SCFileManager::rebuildView()
{
    setupView(m_view, m_view->property(kFilterProperty).toString());
}

void SCFileManager::selectFile(int row)
{
    if (m_view == nullptr || row < 0 || row >= files().size())
        return;
    m_view->clearSelection();
    const QModelIndex index = m_model->index(row, 0);
    // A filter shows fewer rows than there are records.
    if (!index.isValid())
        return;
    m_view->setCurrentIndex(index);
    m_view->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
    m_view->scrollTo(index, QAbstractItemView::EnsureVisible);
}

bool SCFileManager::eventFilter(QObject* watched, QEvent* event)
{
    // A view that is being destroyed sends events that are no mouse events.
    if (!isMouseEvent(event->type()))
        return QObject::eventFilter(watched, event);
    const bool ofView = m_view != nullptr && (watched == m_view || watched == m_view->viewport());
    if (ofView && onPointer(*m_view, *static_cast<QMouseEvent*>(event)))
        return true;
    return QObject::eventFilter(watched, event);
}

/// Consumes a press on an icon and all that follows until the release; the view would continue its own last press.
bool SCFileManager::onPointer(QAbstractItemView& view, const QMouseEvent& event)
{
    if (event.type() == QEvent::MouseMove)
        return m_iconPressed && event.buttons().testFlag(Qt::LeftButton);
    if (event.button() != Qt::LeftButton)
        return false;
    if (event.type() == QEvent::MouseButtonRelease)
        return std::exchange(m_iconPressed, false);
    const QPoint position = view.viewport()->mapFromGlobal(event.globalPosition().toPoint());
    const bool press = event.type() == QEvent::MouseButtonPress;
    const bool onIcon = press && isOnIcon(view, position);
    // Set first: the release may come while the icon's box is open.
    m_iconPressed = onIcon;
    if (onIcon)
        onIconPressed(view, position);
    else if (!press)
        onDoubleClicked(view, position);
    return onIcon;
}

void SCFileManager::onDoubleClicked(const QAbstractItemView& view, const QPoint& position)
{
    const QModelIndex index = view.indexAt(position);
    if (index.isValid())
        openFile(pathOf(index));
}

void SCFileManager::openFile(const QString& path)
{
    if (isThere(path))
        ::openFile(path, *this, [this, path] { emit notOpened(path); });
}

void SCFileManager::showInFolder(const QString& path)
{
    if (isThere(path))
        platform::revealInFileManager(path);
}

bool SCFileManager::isMarkedMissing(const QString& path) const
{
    return std::any_of(files().begin(), files().end(), [&path](const FileRecord& record) {
        return record.filepath == path && FileDetails::of(record.properties).isMissing;
    });
}

bool SCFileManager::isThere(const QString& path)
{
    const bool isThere = QFileInfo::exists(path);
    if (!isThere)
        emit fileMissing(path);
    // It may have come back.
    if (!isThere || isMarkedMissing(path))
        readDetailsOf(path);
    return isThere;
}

void SCFileManager::onIconPressed(QAbstractItemView& view, const QPoint& position)
{
    const QModelIndex index = view.indexAt(position);
    const QString path = pathOf(index);
    if (path.isEmpty())
        return;
    if (FileItemDelegate::folderRect(view.visualRect(index)).contains(position))
        showInFolder(path);
    else
        deleteFile(view, index);
}

bool SCFileManager::isInUse(const QString& path) const
{
    return (!m_fileInUse.isEmpty() && path == m_fileInUse) || m_filesBeingSaved.contains(path);
}

bool SCFileManager::refuseFileInUse(const QString& path, QWidget* parent) const
{
    if (!isInUse(path))
        return false;
    messagebox::information(parent, tr("Delete"),
                            m_filesBeingSaved.contains(path)
                                ? tr("The file is still being saved and cannot be deleted yet.")
                                : tr("The file that is being recorded cannot be deleted."));
    return true;
}

void SCFileManager::deleteFile(QAbstractItemView& view, const QPersistentModelIndex& row)
{
    const QString path = pathOf(row);
    if (refuseFileInUse(path, view.window()))
        return;
    // This one box is not translated; the one for several files is.
    const messagebox::Answer answer = messagebox::ask(
        {view.window(), QStringLiteral("Delete"), QStringLiteral("Do you want to delete this file?"),
         QStringLiteral("Delete file from disk as well."), QStringLiteral("Delete"), kDeleteButtonName});
    if (!answer.confirmed)
        return;
    removeRecords({path}, answer.checked);
    // The view may have been rebuilt while the box was open.
    if (row.isValid())
        m_model->removeRow(row.row());
    else if (m_view != nullptr)
        rebuildView();
    save();
}

void SCFileManager::deleteSelectedFiles(QAbstractItemView* view)
{
    if (view == nullptr || view->selectionModel() == nullptr || view->model() == nullptr)
        return;
    const QModelIndexList selected = view->selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return;
    QStringList paths;
    for (const QModelIndex& index : selected) {
        if (const QString path = pathOf(index); !path.isEmpty())
            paths.append(path);
    }
    for (const QString& path : paths) {
        if (refuseFileInUse(path, view->window()))
            return;
    }
    const QPointer<QAbstractItemView> asked = view;
    const messagebox::Answer answer =
        messagebox::ask({view->window(), tr("Delete"), tr("Do you want to delete %1 files?").arg(selected.size()),
                         tr("Delete files from disk as well."), tr("Delete"), kDeleteButtonName});
    if (!answer.confirmed)
        return;
    removeRecords(paths, answer.checked);
    save();
    if (asked != nullptr)
        setupView(asked, asked->property(kFilterProperty).toString());
}

void SCFileManager::removeRecords(const QStringList& paths, bool fromDisk)
{
    // Some systems delete no file that is open.
    if (fromDisk)
        m_reader->cancel(paths);
    // A file that cannot be deleted from disk leaves the list all the same.
    for (const QString& path : fromDisk ? paths : QStringList()) {
        m_finisher->cancel(path);
        QFile::remove(path);
    }
    m_store.remove(paths);
}
