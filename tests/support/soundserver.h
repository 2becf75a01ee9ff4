// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QTemporaryDir>

/// A PulseAudio server of the test's own, with the sinks and the microphone of the private desktop's. From the making
/// of the object on, all that this process starts finds it in the place of the desktop's server, running or not.
class SoundServer
{
public:
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// Waits until it answers.
    bool start();
    /// As a crash would end it: its socket stays.
    void kill();

private:
    bool writeSettings() const;

    QTemporaryDir m_folder;
    QByteArray m_desktopServer;
    QProcess m_process;
};
