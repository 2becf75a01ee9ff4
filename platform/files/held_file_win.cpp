// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/held_file.h"

#include <QFile>

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
    // The folder's entry has an old size while the file is open.
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.size() : 0;
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
