// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/processusage.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>

#include <algorithm>
#include <unistd.h>

namespace {

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString procFolder(qint64 processId)
{
    return QStringLiteral("/proc/%1").arg(processId);
}

/// Of a process or a thread, by its folder.
double cpuSecondsIn(const QString& folder)
{
    // The name, in brackets, may hold blanks; the fields are counted from behind it: user time is the 12th, system the
    // 13th.
    const QByteArray stat = read(folder + QLatin1String("/stat"));
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    const double ticks = fields.size() > 12 ? fields.at(11).toDouble() + fields.at(12).toDouble() : 0;
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

} // namespace

ProcessUsage usageOf(qint64 processId)
{
    ProcessUsage usage{cpuSecondsIn(procFolder(processId)), 0};
    const QList<QByteArray> lines = read(procFolder(processId) + QLatin1String("/status")).split('\n');
    for (const QByteArray& line : lines)
        if (line.startsWith("VmHWM:"))
            usage.peakMiB = line.mid(6).trimmed().split(' ').constFirst().toDouble() / 1024;
    return usage;
}

double cpuSecondsOfThreads(qint64 processId, const QByteArray& name)
{
    const QDir threads(procFolder(processId) + QLatin1String("/task"));
    const QStringList numbers = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    double seconds = -1;
    for (const QString& number : numbers)
        if (read(threads.filePath(number + QLatin1String("/comm"))).trimmed() == name)
            seconds = std::max(seconds, 0.0) + cpuSecondsIn(threads.filePath(number));
    return seconds;
}
