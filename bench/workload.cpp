// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/workload.h"

#include "bench/areatext.h"
#include "bench/recordertools.h"

namespace {

/// Starts one of the programs that say when they are ready. Empty on success.
QString launch(QProcess& process, const QString& name, const QStringList& arguments)
{
    process.start(executable(name), arguments);
    while (!process.canReadLine())
        if (!process.waitForReadyRead(kToolTimeoutMs))
            return name + QLatin1String(" did not get ready: ") + process.errorString() +
                   QString::fromLocal8Bit(process.readAllStandardError());
    return {};
}

QStringList argumentsFor(const Workload& workload, const QRect& area)
{
    QStringList arguments{QLatin1String(workload.option), "--rate", QString::number(workload.numbersPerSecond)};
    if (!workload.part.isEmpty())
        arguments << "--counter" << textFromArea(area);
    return arguments;
}

} // namespace

QRect Workload::area(const QSize& screen) const
{
    if (part.isEmpty())
        return {QPoint(0, 0), screen};
    const QSize rest = screen - part;
    return {QPoint(rest.width() / 2 & ~1, rest.height() / 2 & ~1), part};
}

Show::~Show()
{
    for (QProcess* process : {&m_screen, &m_tone}) {
        process->terminate();
        if (process->state() != QProcess::NotRunning && !process->waitForFinished())
            process->kill();
        process->waitForFinished();
    }
}

QString Show::begin(const Workload& workload, const QSize& screen)
{
    const QStringList arguments = argumentsFor(workload, workload.area(screen));
    const QString failure = launch(m_screen, QLatin1String(workload.program), arguments);
    return failure.isEmpty() ? launch(m_tone, QStringLiteral("kestrano_test_tone"), {}) : failure;
}
