// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/scfilemanager.h"

#include <QStyledItemDelegate>

/// Name and, under the pointer, folder and delete icons of a row. Logical pixels.
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

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};
