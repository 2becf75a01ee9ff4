// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/owndisplay.h"

#include <QFile>

namespace {

constexpr char kDisplay[] = "DISPLAY";
constexpr int kTimeoutMs = 30'000;

} // namespace

OwnDisplay::OwnDisplay(const QSize& size) : m_before(qgetenv(kDisplay))
{
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.start(QStringLiteral("Xvfb"), {"-displayfd", "1", "-noreset", "-nolisten", "tcp", "-screen", "0",
                                            QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height())});
    m_isThere = m_server.waitForReadyRead(kTimeoutMs);
    if (m_isThere)
        qputenv(kDisplay, ':' + m_server.readLine().trimmed());
}

OwnDisplay::~OwnDisplay()
{
    // A server that was killed leaves its lock and its socket.
    const QString number = qEnvironmentVariable(kDisplay).mid(1);
    const bool wasKilled = m_server.state() == QProcess::NotRunning;
    m_server.terminate();
    m_server.waitForFinished(kTimeoutMs);
    if (m_isThere && wasKilled) {
        QFile::remove(QStringLiteral("/tmp/.X%1-lock").arg(number));
        QFile::remove(QStringLiteral("/tmp/.X11-unix/X%1").arg(number));
    }
    qputenv(kDisplay, m_before);
}

void OwnDisplay::kill()
{
    m_server.kill();
    m_server.waitForFinished(kTimeoutMs);
}
