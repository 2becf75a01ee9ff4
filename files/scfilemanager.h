#pragma once

#include "files/filerecord.h"
#include "files/filerecordsfile.h"

#include <QList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QString>

class QAbstractItemView;
class QMouseEvent;
class QPoint;
class QStandardItemModel;

/// The library of the files that the program has produced, and what the list that shows it does.
///
/// Holds the records, newest first unless the order was reversed, and writes every change to "file_data.json" at once
/// (FileRecordsFile). A file may have several records. All paths are absolute; types are "video", "audio" and
/// "screenshot". User-interface thread.
class SCFileManager : public QObject
{
    Q_OBJECT

public:
    class FileItemDelegate;

    /// The item data that holds a row's absolute path.
    static constexpr int kPathRole = Qt::UserRole + 1;

    /// Loads the library.
    explicit SCFileManager(QObject* parent = nullptr);

    /// Saves it once more.
    ~SCFileManager() override;

    const QList<FileRecord>& files() const { return m_files; }

    /// The records of that type, in the list's order.
    QList<FileRecord> filesByType(const QString& type) const;

    /// How many there are of that type.
    qsizetype count(const QString& type) const;

    /// Enters a file in front of the others, with the present time, and saves. A view shows it after the next
    /// setupView().
    void addFile(const QString& path, const QString& type);

    /// Removes the first record of that path and saves; the file stays. False when there is none.
    bool removeFile(const QString& path);

    /// Turns the list round, for good, and rebuilds the bound view with its filter. Ignored while no view is bound or
    /// the list is empty.
    void reverseFileOrder();

    /// Makes a row of the bound view the only selected one and scrolls to it. Ignored while no view is bound, or when
    /// there are not so many records or rows.
    void selectFile(int row);

    /// Binds the view and fills it with the records of that type, all of them where it is empty. The view remembers the
    /// filter in its property "currentFilter". Also rebuilds a view that is bound. Null is ignored.
    void setupView(QAbstractItemView* view, const QString& filter);

    /// Asks the user, and then deletes what is selected in the view, also from disk if the user wants that.
    void deleteSelectedFiles(QAbstractItemView* view);

    /// The file that is being written to at present, if any: it is not deleted, neither from the list nor from disk.
    void setFileInUse(const QString& path) { m_fileInUse = path; }

    /// Replaces the list by what "file_data.json" holds, without the files that are gone. False when it cannot be read,
    /// or not be cleaned; the list is right then all the same.
    bool load();

    /// Writes the list. False when that failed: the file is then what it was, the list stays, error() has been emitted.
    bool save();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// Something that the user has to know, translated. A save that goes on failing is told once.
    void error(const QString& message);

private:
    // The list: scfilemanager.cpp.
    bool takeOut(const QString& path);
    void reportSave(bool saved);

    // The view: scfilemanager_view.cpp.
    void rebuildView();
    bool onPointer(QAbstractItemView& view, const QMouseEvent& event);
    void onIconPressed(QAbstractItemView& view, const QPoint& place);
    void onDoubleClicked(const QAbstractItemView& view, const QPoint& place);
    void deleteFile(QAbstractItemView& view, const QPersistentModelIndex& row);
    bool refuseFileInUse(const QString& path, QWidget* parent) const;
    void deletePaths(const QStringList& paths, bool fromDisk);

    QList<FileRecord> m_files;
    QStandardItemModel* m_model;
    FileItemDelegate* m_delegate;
    QPointer<QAbstractItemView> m_view;
    FileRecordsFile m_file;
    QString m_fileInUse;
    bool m_saveFails = false;
    /// The left button went down on a row's icon, and may still be.
    bool m_iconPressed = false;
};
