#pragma once

#include "files/scfilemanager.h"

#include <QStyledItemDelegate>

/// Paints the rows of the file list: the name and, on the row below the pointer, a folder and a delete icon.
class SCFileManager::FileItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit FileItemDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Shows what an icon does while the pointer rests on it.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};
