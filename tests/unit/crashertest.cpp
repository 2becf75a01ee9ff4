// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/unit/crashertest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr int kTimeoutMs = 60'000;
constexpr int kPollMs = 20;

} // namespace

CrasherRun::CrasherRun(const QStringList& arguments, qint64 enoughBytes) : CrasherRun(arguments, enoughBytes, {}) {}

CrasherRun::CrasherRun(const QStringList& arguments, qint64 enoughBytes, const QString& folder)
    : m_started(QDateTime::currentDateTime())
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KESTRANO_TEST_CRASH_FOLDER"), folder);
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationDirPath() + QLatin1String("/kestrano_test_crasher"), arguments);
    process.waitForStarted(kTimeoutMs);
    m_processId = process.processId();
    process.waitForReadyRead(kTimeoutMs);
    const QString usualFolder = QString::fromLocal8Bit(process.readLine()).trimmed();
    m_folder = folder.isEmpty() ? usualFolder : folder;
    waitUntilEnded(process, enoughBytes);
    m_ended = QDateTime::currentDateTime();
    m_exitStatus = process.exitStatus();
    m_exitCode = process.exitCode();
    collectReports();
}

void CrasherRun::waitUntilEnded(QProcess& process, qint64 enoughBytes)
{
    QElapsedTimer waited;
    waited.start();
    while (process.state() != QProcess::NotRunning && !waited.hasExpired(kTimeoutMs)) {
        process.waitForFinished(kPollMs);
        if (enoughBytes > 0 && writtenBytes() >= enoughBytes)
            break;
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(kTimeoutMs);
    }
}

qint64 CrasherRun::writtenBytes() const
{
    qint64 bytes = 0;
    const QFileInfoList files = QDir(m_folder).entryInfoList(QDir::Files);
    for (const QFileInfo& file : files)
        bytes += file.size();
    return bytes;
}

void CrasherRun::collectReports()
{
    constexpr qint64 kReadAtMost = qint64{64} * 1024 * 1024;
    const QDir folder(m_folder);
    m_names = m_folder.isEmpty() ? QStringList() : folder.entryList(QDir::Files, QDir::Name);
    for (const QString& name : m_names) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            m_reports.append(file.read(kReadAtMost));
        file.remove();
    }
}

bool CrasherRun::isNamedAfterTheCrash() const
{
    if (m_names.size() != 1)
        return false;
    const QDateTime moment =
        QDateTime::fromString(m_names.first(), QStringLiteral("'crash_'yyyy-MM-dd_HH-mm-ss'.dmp'"));
    return moment.isValid() && m_started.addSecs(-1) <= moment && moment <= m_ended;
}
