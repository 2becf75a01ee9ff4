#pragma once

#include "files/filestore.h"

#include <QList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QString>

class QAbstractItemView;
class QMouseEvent;
class QPoint;
class QStandardItemModel;

/// The list of the files that the program has produced: fills a view with the records of a FileStore, newest first
/// unless the order was reversed, and does what the user asks of them. Every change is saved at once. Paths are
/// absolute. User-interface thread.
class SCFileManager : public QObject
{
    Q_OBJECT

public:
    class FileItemDelegate;

    /// The item data that holds a row's absolute path.
    static constexpr int kPathRole = Qt::UserRole + 1;

    /// Loads the records.
    explicit SCFileManager(QObject* parent = nullptr);

    /// Saves them once more.
    ~SCFileManager() override;

    const QList<FileRecord>& files() const { return m_store.records(); }
    QList<FileRecord> filesByType(const QString& type) const { return m_store.ofType(type); }
    qsizetype count(const QString& type) const { return m_store.count(type); }

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
    bool load() { return m_store.load(); }

    /// Writes the list. False when that failed: the file is then what it was, the list stays, error() has been emitted.
    bool save();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// Something that the user has to know, translated. A save that goes on failing is told once.
    void error(const QString& message);

private:
    void reportSave(bool saved);
    void rebuildView();
    bool onPointer(QAbstractItemView& view, const QMouseEvent& event);
    void onIconPressed(QAbstractItemView& view, const QPoint& place);
    void onDoubleClicked(const QAbstractItemView& view, const QPoint& place);
    void deleteFile(QAbstractItemView& view, const QPersistentModelIndex& row);
    bool refuseFileInUse(const QString& path, QWidget* parent) const;
    void removeRecords(const QStringList& paths, bool fromDisk);

    FileStore m_store;
    QStandardItemModel* m_model;
    FileItemDelegate* m_delegate;
    QPointer<QAbstractItemView> m_view;
    QString m_fileInUse;
    bool m_saveFails = false;
    /// The left button went down on a row's icon, and may still be.
    bool m_iconPressed = false;
};
