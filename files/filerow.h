// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/filerowtexts.h"

#include <QStandardItem>

struct FileRecord;

/// A row of the file list. What it shows of the record besides the name is put into words when it is asked for.
class FileRow : public QStandardItem
{
public:
    /// The record's absolute path.
    static constexpr int kPathRole = Qt::UserRole + 1;
    static constexpr int kPropertiesRole = Qt::UserRole + 2;
    /// A FileProgress, as a number.
    static constexpr int kProgressRole = Qt::UserRole + 3;

    FileRow(const FileRecord& record, FileProgress progress);

    /// The texts of any row of the file list.
    static FileRowTexts textsOf(const QModelIndex& index);

    void update(const FileRecord& record, FileProgress progress);

    QVariant data(int role) const override;
};
