// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filerow.h"

#include "files/filestore.h"

#include <QFileInfo>

namespace {

FileRowTexts textsFrom(const QVariant& properties, const QVariant& progress)
{
    return FileRowTexts::of(properties.toMap(), static_cast<FileProgress>(progress.toInt()));
}

} // namespace

FileRow::FileRow(const FileRecord& record, FileProgress progress) : QStandardItem(QFileInfo(record.filepath).fileName())
{
    setData(record.filepath, kPathRole);
    update(record, progress);
}

void FileRow::update(const FileRecord& record, FileProgress progress)
{
    setData(record.properties, kPropertiesRole);
    setData(static_cast<int>(progress), kProgressRole);
}

FileRowTexts FileRow::textsOf(const QModelIndex& index)
{
    return textsFrom(index.data(kPropertiesRole), index.data(kProgressRole));
}

QVariant FileRow::data(int role) const
{
    if (role != Qt::AccessibleDescriptionRole && role != Qt::ToolTipRole)
        return QStandardItem::data(role);
    const FileRowTexts texts = textsFrom(data(kPropertiesRole), data(kProgressRole));
    const QString text = role == Qt::ToolTipRole ? texts.explanation : texts.description();
    return text.isEmpty() ? QVariant() : QVariant(text);
}
