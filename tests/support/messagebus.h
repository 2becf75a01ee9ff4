// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>

/// A message bus of the test's own, which becomes the session's. To be made before anything asks for the session's.
class MessageBus
{
public:
    MessageBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (m_daemon.waitForReadyRead(10000))
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readLine().trimmed());
        else
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    ~MessageBus()
    {
        m_daemon.terminate();
        m_daemon.waitForFinished();
    }
    MessageBus(const MessageBus&) = delete;
    MessageBus& operator=(const MessageBus&) = delete;

private:
    QProcess m_daemon;
};
