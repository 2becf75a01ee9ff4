#include "platform/shell_path.h"
#include "platform/system_failure.h"
#include "platform/windows_path.h"

#include <QString>

#include <windows.h>

#include <vector>

namespace platform {

namespace {

/// With the closing zero that Windows counts in.
bool isWithinLimit(const QString& path)
{
    return path.size() < MAX_PATH;
}

/// By its short names and without the mark; empty when the system gives none.
QString byShortNames(const QString& path)
{
    const QString extended = extendedWindowsPath(path);
    const auto* const wide = reinterpret_cast<const wchar_t*>(extended.utf16());
    std::vector<wchar_t> room(static_cast<std::size_t>(extended.size()) + 1);
    // The length without its closing zero, or, where the room is too small, the size that it would take.
    const DWORD length = GetShortPathNameW(wide, room.data(), static_cast<DWORD>(room.size()));
    if (length == 0)
        reportSystemFailure("GetShortPathName", GetLastError());
    if (length == 0 || length >= room.size())
        return {};
    return withoutWindowsMark(QString::fromWCharArray(room.data(), static_cast<int>(length)));
}

} // namespace

QString shellPath(const QString& path)
{
    if (isWithinLimit(path))
        return path;
    const QString shortened = byShortNames(path);
    return !shortened.isEmpty() && isWithinLimit(shortened) ? shortened : path;
}

} // namespace platform
