#include "tests/unit/crashertest.h"

#include <QCoreApplication>
#include <QFile>

namespace {

constexpr int kTimeoutMs = 60'000;

} // namespace

CrasherRun::CrasherRun(const QString& way) : m_started(QDateTime::currentDateTime())
{
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + QLatin1String("/kestrano_test_crasher"), {way});
    process.waitForStarted(kTimeoutMs);
    m_processId = process.processId();
    process.waitForFinished(kTimeoutMs);
    m_ended = QDateTime::currentDateTime();
    m_exitStatus = process.exitStatus();
    m_exitCode = process.exitCode();

    m_folder = QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
    QDir folder(m_folder);
    m_names = m_folder.isEmpty() ? QStringList() : folder.entryList(QDir::Files);
    for (const QString& name : m_names) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            m_report = file.readAll();
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
