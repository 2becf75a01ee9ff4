// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/held_file.h"
#include "platform/files/windows_path.h"

#include <QFile>

#include <windows.h>

namespace platform {

std::shared_ptr<HeldFile> HeldFile::open(const QString& path)
{
    constexpr int kNothing = -1;
    if (!QFile::exists(path))
        return nullptr;
    return std::shared_ptr<HeldFile>(new HeldFile(path, kNothing, false));
}

HeldFile::~HeldFile() = default;

bool HeldFile::isInPlace() const
{
    return QFile::exists(m_path);
}

qint64 HeldFile::bytes() const
{
    // The folder's entry has an old size while the file is open. Who asks the file keeps nobody from deleting it.
    const HANDLE file = CreateFileW(extendedWindowsPath(m_path).toStdWString().c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 0;
    LARGE_INTEGER size{};
    const bool isKnown = GetFileSizeEx(file, &size) != 0;
    CloseHandle(file);
    return isKnown ? size.QuadPart : 0;
}

bool HeldFile::isWrittenTo() const
{
    return false;
}

bool HeldFile::isHeld() const
{
    return false;
}

bool HeldFile::isDeleted() const
{
    return false;
}

QString HeldFile::currentPath() const
{
    return {};
}

bool HeldFile::copyTo(const QString& /*path*/, QString& error) const
{
    error = QStringLiteral("the file cannot be reached");
    return false;
}

} // namespace platform
