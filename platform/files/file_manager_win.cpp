// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_manager.h"
#include "platform/files/windows_path.h"
#include "platform/system_failure.h"

#include <QProcess>

#include <windows.h>

#include <array>
#include <vector>

namespace platform {

namespace {

/// By its whole path, since a bare name would be looked for beside the program and in the working folder first.
QString explorerProgram()
{
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemWindowsDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0)
        reportSystemFailure("GetSystemWindowsDirectory", GetLastError());
    if (length == 0 || length >= folder.size())
        return QStringLiteral("explorer");
    return QString::fromWCharArray(folder.data(), static_cast<int>(length)) + QStringLiteral("\\explorer.exe");
}

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

void revealInFileManager(const QString& path, std::chrono::milliseconds /*answerLimit*/)
{
    const std::optional<QString> arguments = explorerArguments(shellPath(path));
    if (!arguments) {
        reportFailure(QStringLiteral("Not the path of a file, not shown in the file manager: %1").arg(path));
        return;
    }
    QProcess explorer;
    explorer.setProgram(explorerProgram());
    explorer.setNativeArguments(*arguments);
    if (!explorer.startDetached())
        reportFailure(QStringLiteral("Explorer could not be started: %1").arg(explorer.errorString()));
}

QString shellPath(const QString& path)
{
    if (isWithinLimit(path))
        return path;
    const QString shortened = byShortNames(path);
    return !shortened.isEmpty() && isWithinLimit(shortened) ? shortened : path;
}

} // namespace platform
