// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/scfilemanager.h"

#include <QStyledItemDelegate>

/// Paints the rows of the file list: the name and, below the pointer, a folder and a delete icon. Logical pixels.
class SCFileManager::FileItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int kHeight = 32;

    explicit FileItemDelegate(QObject* parent = nullptr);

    static QRect textRect(const QRect& row);
    static QRect folderRect(const QRect& row);
    static QRect deleteRect(const QRect& row);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Shows the tool tips of the icons.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};
