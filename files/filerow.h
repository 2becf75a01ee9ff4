#pragma once

#include <QRect>

/// Where things stand in a row of the file list. Logical pixels, in the coordinates of the row's rectangle.
namespace filerow {

inline constexpr int kHeight = 32;
inline constexpr int kFolderIconSide = 18;
inline constexpr int kDeleteIconSide = 16;

/// The file's name; it ends where the icons begin, shown or not.
inline QRect textRect(const QRect& row)
{
    return row.adjusted(8, 0, -48, 0);
}

/// "Show in Folder".
inline QRect folderRect(const QRect& row)
{
    return {QPoint(row.right() - 46, row.top() + 7), QPoint(row.right() - 46 + kFolderIconSide - 1, row.bottom() - 7)};
}

/// "Delete".
inline QRect deleteRect(const QRect& row)
{
    return {QPoint(row.right() - 20, row.top() + 8), QPoint(row.right() - 20 + kDeleteIconSide - 1, row.bottom() - 8)};
}

} // namespace filerow
