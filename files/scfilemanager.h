// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/filerow.h"
#include "files/filestore.h"
#include "platform/process/display_loss.h"

#include <QList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

class QAbstractItemView;
class QMouseEvent;
class QPoint;
class QStandardItemModel;
class FileDetailsReader;
class RecordingFinisher;

/// Shows a FileStore, newest first unless reversed, and handles the user's actions on it. Saves every change.
/// User-interface thread.
class SCFileManager : public QObject
{
    Q_OBJECT

public:
    class FileItemDelegate;

    /// A row's absolute path.
    static constexpr int kPathRole = FileRow::kPathRole;

    explicit SCFileManager(QObject* parent = nullptr);

    /// Saves.
    ~SCFileManager() override;

    const QList<FileRecord>& files() const { return m_store.records(); }
    QList<FileRecord> filesByType(const QString& type) const { return m_store.ofType(type); }
    qsizetype count(const QString& type) const { return m_store.count(type); }

    /// The view shows it after the next setupView(). The file in use is finished when it is in use no more, or at the
    /// next start.
    void addFile(const QString& path, const QString& type);

    /// The record, not the file. False when there is none.
    bool removeFile(const QString& path);

    /// Ignored without a view or files.
    void reverseFileOrder();

    /// Ignored without a view or such a row.
    void selectFile(int row);

    /// Shows the records of that type, or all. The view's property "currentFilter" keeps the filter.
    void setupView(QAbstractItemView* view, const QString& filter);

    /// With the system's program.
    void openFile(const QString& path);
    /// In the file manager.
    void showInFolder(const QString& path);

    /// After asking; from disk as well if wanted.
    void deleteSelectedFiles(QAbstractItemView* view);

    /// The file that is being recorded, which cannot be deleted.
    void setFileInUse(const QString& path);

    /// A recording's records get another path. The file there is written to, and in use, until setFileSaved().
    void moveFile(const QString& from, const QString& to);
    void setFileSaved(const QString& path);

    bool load() { return m_store.load(); }

    /// The first of successive failures emits error().
    bool save();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// Translated.
    void error(const QString& message);
    /// The user wants to see a file that is gone.
    void fileMissing(const QString& path);
    /// The system has no program for the file that the user wants to see.
    void notOpened(const QString& path);

private:
    void finishRecordings();
    void onDisplayLoss();
    void onFinished(const QString& path, bool isWhole);
    void onPostponed(const QString& path);
    void onDetailsSettled();
    void onDetailsRead(const QHash<QString, FileDetails>& details);
    void readDetails(const std::function<bool(const FileRecord&)>& isWanted);
    void readDetailsOf(const QString& path);
    void readMissingDetails();
    FileProgress progressOf(const FileRecord& record) const;
    QList<FileRecord> shownRecords() const;
    void updateRows();
    void rebuildView();
    bool onPointer(QAbstractItemView& view, const QMouseEvent& event);
    void onIconPressed(QAbstractItemView& view, const QPoint& position);
    void onDoubleClicked(const QAbstractItemView& view, const QPoint& position);
    void deleteFile(QAbstractItemView& view, const QPersistentModelIndex& row);
    bool isInUse(const QString& path) const;
    bool isThere(const QString& path);
    bool isMarkedMissing(const QString& path) const;
    bool refuseFileInUse(const QString& path, QWidget* parent) const;
    void removeRecords(const QStringList& paths, bool fromDisk);

    FileStore m_store;
    QStandardItemModel* m_model;
    FileItemDelegate* m_delegate;
    QPointer<QAbstractItemView> m_view;
    RecordingFinisher* m_finisher;
    FileDetailsReader* m_reader;
    const platform::DisplayLossAction m_onDisplayLoss{[this] { onDisplayLoss(); }};
    QString m_fileInUse;
    QStringList m_filesBeingSaved;
    QSet<QString> m_recordedFiles;
    /// Of these the details are wanted once no file is in use.
    QSet<QString> m_toRead;
    bool m_saveFails = false;
    bool m_hasUnsavedDetails = false;
    bool m_iconPressed = false;
};
