// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/programundertest.h"

#include <QByteArray>
#include <QDir>
#include <QMap>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

/// A user's profile, in which any number of instances of the program are started.
class Profile
{
public:
    Profile() : Profile(QDir::tempPath()) {}
    explicit Profile(const QString& parentFolder);

    /// From now on instances run as this user, who shares only the folder for temporary files with others. Needs root.
    void giveTo(uint user);
    std::optional<uint> user() const { return m_user; }
    QDir root() const { return QDir(m_root.path()); }
    QDir logFolder() const { return QDir(m_root.filePath(QStringLiteral("data/Tolvaran/Kestrano/logs"))); }
    QString settingsPath() const { return m_root.filePath(QStringLiteral("config/Tolvaran/Kestrano.conf")); }
    QStringList logFiles() const;
    /// The messages of the one log file, without time and level.
    QStringList loggedMessages() const;

    void writeSettings(const QByteArray& content) const;
    /// What the settings file holds, read as the program reads it.
    QMap<QString, QVariant> settings() const;

    /// The environment of an instance: this profile, and no language but what a test sets.
    QProcessEnvironment environment;

private:
    QTemporaryDir m_root;
    std::optional<uint> m_user;
};

/// While it lives, this process uses the temporary folder of the profile's instances, and so their segment.
class InTemporaryFolderOf
{
public:
    explicit InTemporaryFolderOf(const Profile& profile);
    ~InTemporaryFolderOf();
    InTemporaryFolderOf(const InTemporaryFolderOf&) = delete;
    InTemporaryFolderOf& operator=(const InTemporaryFolderOf&) = delete;

private:
    QByteArray m_before;
};

/// One start of the program in a profile that it may share with others; what is stored there is the test's own
/// affair. The destructor ends it.
class StartedInstance : private ProgramUnderTest
{
public:
    enum class Start
    {
        AtOnce,
        Held ///< the process is there and waits for release() before it becomes the program
    };

    explicit StartedInstance(const Profile& profile, Start start = Start::AtOnce);
    ~StartedInstance() override;

    bool waitUntilHeld() { return waitForMessage(QStringLiteral("held")); }
    void release() { process().closeWriteChannel(); }

    /// Waits for a message that contains text.
    bool waitForMessage(const QString& text);
    /// Waits until the program has shown its window and published it.
    bool waitUntilPublished() { return waitForMessage(QStringLiteral("Stored window handle and process ID")); }
    bool waitUntilEnded();
    using ProgramUnderTest::exitCode;
    using ProgramUnderTest::isRunning;
    using ProgramUnderTest::processId;
    void sendSignal(int number) const;
    /// Everything it has said so far on its message output and standard error.
    QStringList messages();
    QString transcript() { return messages().join(QLatin1Char('\n')); }

protected:
    QDir dataFolder() const override { return m_profile.logFolder().filePath(QStringLiteral("..")); }
    bool writeSettings() override { return true; }
    QStringList command() const override;
    QProcessEnvironment environment() override { return m_profile.environment; }

private:
    const Profile& m_profile;
    Start m_start;
};
