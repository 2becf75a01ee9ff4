// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_use.h"
#include "platform/files/windows_path.h"

#include <windows.h>

std::optional<bool> platform::isOpenForWriting(const QString& path)
{
    const std::wstring name = extendedWindowsPath(path).toStdWString();
    const HANDLE file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION ? std::optional(true) : std::nullopt;
    CloseHandle(file);
    return false;
}
