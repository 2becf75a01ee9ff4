// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_opening.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <unistd.h>

namespace platform {

namespace {

// Exit codes of xdg-open.
constexpr int kFileMissing = 2;
constexpr int kActionFailed = 4;

bool isOpeningWatched = true;

bool hasFailed(const QProcess& process)
{
    const int code = process.exitCode();
    return process.exitStatus() == QProcess::NormalExit && code >= kFileMissing && code <= kActionFailed;
}

/// Without a parent: whoever deletes a running process kills it, and what it has opened.
QProcess* makeProcess(const QString& program, const QString& path)
{
    auto* const process = new QProcess;
    process->setProgram(program);
    process->setArguments({QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)});
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([] { ::setsid(); });
    return process;
}

} // namespace

bool openWatched(const QString& path, const std::function<void()>& notOpened)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (!isOpeningWatched || program.isEmpty())
        return false;
    QProcess* const process = makeProcess(program, path);
    QElapsedTimer sinceStart;
    sinceStart.start();
    QObject::connect(process, &QProcess::finished, process, [process, sinceStart, notOpened] {
        process->deleteLater();
        if (hasFailed(*process) && !sinceStart.hasExpired(kOpeningAnswerLimit.count()))
            notOpened();
    });
    QObject::connect(process, &QProcess::errorOccurred, process, [process, notOpened](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        process->deleteLater();
        notOpened();
    });
    process->start();
    return true;
}

void setOpeningWatched(bool watched)
{
    isOpeningWatched = watched;
}

} // namespace platform
