// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/processusage.h"

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

/// The number behind a name at the start of a line; 0 where there is none.
double number(const QByteArray& status, const QByteArray& name)
{
    const QList<QByteArray> lines = status.split('\n');
    for (const QByteArray& line : lines)
        if (line.startsWith(name))
            return line.mid(name.size()).trimmed().split(' ').constFirst().toDouble();
    return 0;
}

int sharedPartsOf(const QByteArray& maps)
{
    const QList<QByteArray> lines = maps.split('\n');
    return static_cast<int>(std::count_if(lines.begin(), lines.end(), [](const QByteArray& line) {
        return line.contains("/SYSV") || line.contains("/dev/shm/") || line.contains("/memfd:");
    }));
}

} // namespace

ProcessUsage usageOf(qint64 processId)
{
    constexpr double kKiBPerMiB = 1024;
    const QString folder = procFolder(processId);
    const QByteArray status = read(folder + QLatin1String("/status"));
    ProcessUsage usage;
    usage.cpuSeconds = cpuSecondsIn(folder);
    usage.memoryMiB = number(status, "VmRSS:") / kKiBPerMiB;
    usage.peakMiB = number(status, "VmHWM:") / kKiBPerMiB;
    usage.threads = static_cast<int>(number(status, "Threads:"));
    usage.descriptors = static_cast<int>(
        QDir(folder + QLatin1String("/fd")).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
    usage.sharedParts = sharedPartsOf(read(folder + QLatin1String("/maps")));
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
