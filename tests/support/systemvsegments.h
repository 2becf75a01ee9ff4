// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QList>

/// System V segments of memory, as the system lists them.
namespace systemvsegments {

/// The permissions of those without a key that a process has made, with 01000 for what goes with its last user; -1
/// where the system lists none.
inline QList<int> madeBy(qint64 processId)
{
    QFile list(QStringLiteral("/proc/sysvipc/shm"));
    if (!list.open(QIODevice::ReadOnly))
        return {-1};
    constexpr int kOctal = 8;
    const QByteArray maker = QByteArray::number(processId);
    QList<int> permissions;
    const QList<QByteArray> lines = list.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        // Key, number, permissions, size, maker.
        if (fields.value(0) == "0" && fields.value(4) == maker)
            permissions << fields.value(2).toInt(nullptr, kOctal);
    }
    return permissions;
}

/// Those that do not go with the process: libraries' own may.
inline QList<int> leftBehindBy(qint64 processId)
{
    constexpr int kGoesWithTheLast = 01000;
    QList<int> permissions = madeBy(processId);
    permissions.removeIf([](int permission) { return permission != -1 && (permission & kGoesWithTheLast) != 0; });
    return permissions;
}

} // namespace systemvsegments
