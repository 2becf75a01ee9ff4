// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/processusage.h"

#include <QFile>
#include <QList>

#include <unistd.h>

namespace {

QByteArray readProcFile(qint64 processId, const char* name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(processId).arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

ProcessUsage usageOf(qint64 processId)
{
    ProcessUsage usage;
    // The name, in brackets, may hold blanks; the fields are counted from behind it: user time is the 12th, system the
    // 13th.
    const QByteArray stat = readProcFile(processId, "stat");
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    if (fields.size() > 12) {
        const double ticks = fields.at(11).toDouble() + fields.at(12).toDouble();
        usage.cpuSeconds = ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
    }
    const QList<QByteArray> lines = readProcFile(processId, "status").split('\n');
    for (const QByteArray& line : lines)
        if (line.startsWith("VmHWM:"))
            usage.peakMiB = line.mid(6).trimmed().split(' ').constFirst().toDouble() / 1024;
    return usage;
}
