#include "tests/desktop/startedcopy.h"

#include "app/settingsfile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <csignal>

namespace {

constexpr int kTimeoutMs = 30'000;
constexpr int kPollMs = 20;
/// "2026-01-31 12:00:00.000 - "
constexpr qsizetype kStampLength = 26;
/// Until its input is closed.
constexpr char kHeldStart[] = "echo held; read -r _; exec \"$0\"";

} // namespace

Profile::Profile() : environment(QProcessEnvironment::systemEnvironment())
{
    const QMap<QString, QString> folders{{"HOME", "home"},
                                         {"XDG_CONFIG_HOME", "config"},
                                         {"XDG_DATA_HOME", "data"},
                                         {"XDG_CACHE_HOME", "cache"},
                                         {"TMPDIR", "tmp"}};
    for (auto folder = folders.cbegin(); folder != folders.cend(); ++folder) {
        root().mkpath(folder.value());
        environment.insert(folder.key(), m_root.filePath(folder.value()));
    }
    for (const char* const variable : {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES"})
        environment.remove(QLatin1String(variable));
}

QStringList Profile::logFiles() const
{
    return logFolder().entryList({QStringLiteral("vexmoor_*.log")}, QDir::Files, QDir::Name);
}

QStringList Profile::loggedMessages() const
{
    QStringList messages;
    QFile file(logFolder().filePath(logFiles().value(0)));
    if (!file.open(QIODevice::ReadOnly))
        return messages;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines)
        messages.append(line.mid(kStampLength).remove(QStringLiteral("Info: ")));
    return messages;
}

void Profile::writeSettings(const QByteArray& content) const
{
    QDir().mkpath(QFileInfo(settingsPath()).path());
    QFile file(settingsPath());
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

QMap<QString, QVariant> Profile::settings() const
{
    QMap<QString, QVariant> values;
    QFile file(settingsPath());
    if (file.open(QIODevice::ReadOnly))
        settingsfile::read(file, values);
    return values;
}

InTemporaryFolderOf::InTemporaryFolderOf(const Profile& profile) : m_before(qgetenv("TMPDIR"))
{
    qputenv("TMPDIR", profile.environment.value(QStringLiteral("TMPDIR")).toLocal8Bit());
}

InTemporaryFolderOf::~InTemporaryFolderOf()
{
    if (m_before.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", m_before);
}

StartedCopy::StartedCopy(const Profile& profile, Start start)
{
    const QString program = QCoreApplication::applicationDirPath() + QLatin1String("/kestrano");
    m_process.setProcessEnvironment(profile.environment);
    m_process.setWorkingDirectory(profile.root().path());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    if (start == Start::AtOnce)
        m_process.start(program, QStringList());
    else
        m_process.start(QStringLiteral("sh"), {QStringLiteral("-c"), QLatin1String(kHeldStart), program});
    m_process.waitForStarted();
}

StartedCopy::~StartedCopy()
{
    if (!isRunning())
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(kTimeoutMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

bool StartedCopy::waitForMessage(const QString& text)
{
    QElapsedTimer waited;
    waited.start();
    while (!transcript().contains(text)) {
        if (waited.hasExpired(kTimeoutMs) || !isRunning())
            return transcript().contains(text);
        m_process.waitForReadyRead(kPollMs);
    }
    return true;
}

bool StartedCopy::waitUntilEnded()
{
    return !isRunning() || m_process.waitForFinished(kTimeoutMs);
}

int StartedCopy::exitCode() const
{
    return !isRunning() && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void StartedCopy::sendSignal(int number) const
{
    ::kill(static_cast<pid_t>(processId()), number);
}

QStringList StartedCopy::messages()
{
    m_output += m_process.readAll();
    return QString::fromLocal8Bit(m_output).split(u'\n', Qt::SkipEmptyParts);
}
