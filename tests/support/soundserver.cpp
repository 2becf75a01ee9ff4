// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/soundserver.h"

#include <QFile>
#include <QTest>

namespace {

constexpr char kServerVariable[] = "PULSE_SERVER";
constexpr int kStartTimeoutMs = 30'000;

bool answers()
{
    QProcess process;
    process.start(QStringLiteral("pactl"), {QStringLiteral("info")});
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

// The path of a socket must stay short.
SoundServer::SoundServer()
    : m_folder(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/sound.XXXXXX"))
    , m_desktopServer(qgetenv(kServerVariable))
{
    qputenv(kServerVariable, "unix:" + m_folder.filePath(QStringLiteral("socket")).toUtf8());
}

SoundServer::~SoundServer()
{
    kill();
    if (m_desktopServer.isNull())
        qunsetenv(kServerVariable);
    else
        qputenv(kServerVariable, m_desktopServer);
}

bool SoundServer::start()
{
    if (!writeSettings())
        return false;
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.start(QStringLiteral("pulseaudio"),
                    {"-n", "--daemonize=no", "--exit-idle-time=-1", "--disable-shm=yes", "--realtime=no",
                     "--high-priority=no", "--use-pid-file=no", "--log-target=stderr",
                     QLatin1String("--file=") + m_folder.filePath(QStringLiteral("settings"))});
    return m_process.waitForStarted() && QTest::qWaitFor(answers, kStartTimeoutMs);
}

void SoundServer::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool SoundServer::writeSettings() const
{
    const QString text =
        QStringLiteral("load-module module-null-sink sink_name=%1 rate=48000\n"
                       "load-module module-null-sink sink_name=%2 rate=48000\n"
                       "set-default-sink %1\n"
                       "load-module module-remap-source source_name=%3 master=%2.monitor\n"
                       "set-default-source %3\n"
                       "load-module module-native-protocol-unix socket=%4 auth-anonymous=1\n")
            .arg(qEnvironmentVariable("KESTRANO_TEST_SINK"), qEnvironmentVariable("KESTRANO_TEST_MICROPHONE_SINK"),
                 qEnvironmentVariable("KESTRANO_TEST_MICROPHONE"), m_folder.filePath(QStringLiteral("socket")));
    QFile file(m_folder.filePath(QStringLiteral("settings")));
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0;
}
