#pragma once

#include "files/scfilemanager.h"

#include <QStyledItemDelegate>

/// Paints the rows of the file list: the name and, on the row below the pointer, a folder and a delete icon. Logical
/// pixels, in the coordinates of the row's rectangle.
class SCFileManager::FileItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int kHeight = 32;

    explicit FileItemDelegate(QObject* parent = nullptr);

    /// The file's name; it ends where the icons begin, shown or not.
    static QRect textRect(const QRect& row);
    /// "Show in Folder".
    static QRect folderRect(const QRect& row);
    /// "Delete".
    static QRect deleteRect(const QRect& row);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Shows what an icon does while the pointer rests on it.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};
