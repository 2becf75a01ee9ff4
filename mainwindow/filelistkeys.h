// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QModelIndex>
#include <QObject>

class QAbstractItemView;
class QKeyEvent;
class QWidget;

/// Gives a list, which takes no focus itself, the keys of widgets beside it: Up, Down, Page Up, Page Down, Home and End
/// choose a row, with Shift several, Ctrl+A all; Enter opens the current one, Ctrl+Enter shows it in its folder, Delete
/// deletes what is selected.
/// User-interface thread.
class FileListKeys : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the view, which the widgets' lives do not matter to.
    FileListKeys(QAbstractItemView& view, const QList<QWidget*>& widgets);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void openRequested(const QModelIndex& row);
    void folderRequested(const QModelIndex& row);
    void deletionRequested();

private:
    bool onKey(const QKeyEvent& event);
    void onEnter(const QKeyEvent& event);
    void moveInList(const QKeyEvent& event);

    QAbstractItemView& m_view;
};
