// SPDX-License-Identifier: GPL-3.0-or-later
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

/// Shows the files of a FileStore, newest first unless reversed, in a view and handles the user's actions on them.
/// Saves every change at once. User-interface thread.
class SCFileManager : public QObject
{
    Q_OBJECT

public:
    class FileItemDelegate;

    /// A row's absolute path.
    static constexpr int kPathRole = Qt::UserRole + 1;

    explicit SCFileManager(QObject* parent = nullptr);

    /// Saves.
    ~SCFileManager() override;

    const QList<FileRecord>& files() const { return m_store.records(); }
    QList<FileRecord> filesByType(const QString& type) const { return m_store.ofType(type); }
    qsizetype count(const QString& type) const { return m_store.count(type); }

    /// Prepends a record and saves. The view shows it after the next setupView().
    void addFile(const QString& path, const QString& type);

    /// Removes the first record of that path, not the file, and saves. False when there is none.
    bool removeFile(const QString& path);

    /// Reverses and saves the list and rebuilds the view. Ignored without a view or files.
    void reverseFileOrder();

    /// Selects only that row of the view and scrolls to it. Ignored without a view or such a row.
    void selectFile(int row);

    /// Binds or rebuilds a view with the records of that type, all of them when empty. The view's property
    /// "currentFilter" keeps the filter. Null is ignored.
    void setupView(QAbstractItemView* view, const QString& filter);

    /// Asks the user and deletes what is selected in the view, if wanted also from disk.
    void deleteSelectedFiles(QAbstractItemView* view);

    /// The file that is being recorded, if any, which cannot be deleted.
    void setFileInUse(const QString& path) { m_fileInUse = path; }

    /// As FileStore::load().
    bool load() { return m_store.load(); }

    /// As FileStore::save(); the first of successive failures emits error().
    bool save();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// Translated.
    void error(const QString& message);

private:
    void reportSave(bool saved);
    void rebuildView();
    bool onPointer(QAbstractItemView& view, const QMouseEvent& event);
    void onIconPressed(QAbstractItemView& view, const QPoint& position);
    void onDoubleClicked(const QAbstractItemView& view, const QPoint& position);
    void deleteFile(QAbstractItemView& view, const QPersistentModelIndex& row);
    bool refuseFileInUse(const QString& path, QWidget* parent) const;
    void removeRecords(const QStringList& paths, bool fromDisk);

    FileStore m_store;
    QStandardItemModel* m_model;
    FileItemDelegate* m_delegate;
    QPointer<QAbstractItemView> m_view;
    QString m_fileInUse;
    bool m_saveFails = false;
    /// The left button is down on a row's icon.
    bool m_iconPressed = false;
};
