// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/scfilemanager.h"

#include <QStyledItemDelegate>

/// Name, quietly at its right state, length, size and date in columns, and, under the pointer, folder and delete icons
/// of a FileRow. The columns cut off a long name; where it would become too short they go, length first and state last.
/// Logical pixels.
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
