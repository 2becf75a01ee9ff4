// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/startedinstance.h"

#include "app/settingsfile.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kTimeoutMs = 30'000;
/// "2026-01-31 12:00:00.000 - "
constexpr qsizetype kStampLength = 26;
/// Until its input is closed.
constexpr char kHeldStart[] = "echo held; read -r _; exec \"$0\"";

} // namespace

Profile::Profile(const QString& parentFolder)
    : environment(QProcessEnvironment::systemEnvironment()), m_root(parentFolder + QLatin1String("/kestrano-XXXXXX"))
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
    // Of newer versions Qt remarks on standard error that it needs UTF-8, where a user has nothing else.
    environment.insert(QStringLiteral("LC_CTYPE"), QStringLiteral("C.UTF-8"));
}

void Profile::giveTo(uint user)
{
    m_user = user;
    root().mkdir("run");
    const auto give = [user](const QString& path) {
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        (void)chown(QFile::encodeName(path).constData(), user, user);
    };
    for (const QFileInfo& folder : root().entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        give(folder.filePath());
    // The test is one of the others.
    const mode_t forEverybody = S_ISVTX | S_IRWXU | S_IRWXG | S_IRWXO;
    (void)chown(QFile::encodeName(m_root.filePath("tmp")).constData(), 0, 0);
    chmod(QFile::encodeName(m_root.filePath("tmp")).constData(), forEverybody);
    chmod(QFile::encodeName(m_root.path()).constData(), forEverybody);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_root.filePath("run"));
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

StartedInstance::StartedInstance(const Profile& profile, Start start) : m_profile(profile), m_start(start)
{
    process().setWorkingDirectory(profile.root().path());
    ProgramUnderTest::start();
}

StartedInstance::~StartedInstance()
{
    end();
}

QStringList StartedInstance::command() const
{
    if (const auto user = m_profile.user()) {
        const QString number = QString::number(*user);
        return {"setpriv", "--reuid", number, "--regid", number, "--clear-groups", executable()};
    }
    if (m_start == Start::AtOnce)
        return {executable()};
    return {QStringLiteral("sh"), QStringLiteral("-c"), QLatin1String(kHeldStart), executable()};
}

bool StartedInstance::waitForMessage(const QString& text)
{
    return ProgramUnderTest::waitForMessage(text, kTimeoutMs).has_value();
}

bool StartedInstance::waitUntilEnded()
{
    return ProgramUnderTest::waitUntilEnded(kTimeoutMs);
}

void StartedInstance::sendSignal(int number) const
{
    ::kill(static_cast<pid_t>(processId()), number);
}

QStringList StartedInstance::messages()
{
    QStringList texts;
    for (const Line& line : ProgramUnderTest::messages())
        texts.append(line.text);
    return texts;
}
