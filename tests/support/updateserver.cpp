// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/updateserver.h"

#include <QFile>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>

namespace {

constexpr int kTrickleMs = 300;
constexpr qint64 kPieceBytes = qint64{256} * 1024;

QByteArray content(const char* name)
{
    QFile file(QStringLiteral(KESTRANO_UPDATE_SERVER_FOLDER "/%1").arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

UpdateServer::UpdateServer(bool trusted)
    : m_certificateFile(content("update-server.crt"))
    , m_keyFile(content("update-server.key"))
    , m_previousConfiguration(QSslConfiguration::defaultConfiguration())
    , m_previousProxy(QNetworkProxy::applicationProxy())
{
    m_clock.start();
    listen(QHostAddress::LocalHost);
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), serverPort()));
    QSslConfiguration configuration = m_previousConfiguration;
    configuration.setCaCertificates(trusted ? QSslCertificate::fromData(m_certificateFile) : QList<QSslCertificate>());
    QSslConfiguration::setDefaultConfiguration(configuration);
    setAnswer("{}");
}

UpdateServer::~UpdateServer()
{
    QSslConfiguration::setDefaultConfiguration(m_previousConfiguration);
    QNetworkProxy::setApplicationProxy(m_previousProxy);
}

bool UpdateServer::isConnected() const
{
    return !findChildren<QSslSocket*>().isEmpty();
}

void UpdateServer::incomingConnection(qintptr handle)
{
    auto* const socket = new QSslSocket(this);
    // What comes in here does not leave by the proxy.
    socket->setProxy(QNetworkProxy::NoProxy);
    socket->setLocalCertificate(QSslCertificate(m_certificateFile));
    socket->setPrivateKey(QSslKey(m_keyFile, QSsl::Rsa));
    socket->setSocketDescriptor(handle);
    connect(socket, &QSslSocket::readyRead, this, [this, socket] { onReadyRead(*socket); });
    connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
}

void UpdateServer::onReadyRead(QSslSocket& socket)
{
    const QByteArray waiting = socket.peek(socket.bytesAvailable());
    const qsizetype end = waiting.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    const QByteArray head = socket.read(end + 4);
    if (!socket.isEncrypted()) {
        openTunnel(socket, head);
        return;
    }
    m_requests.append(head);
    m_requestTimesMs.append(m_clock.elapsed());
    answer(socket);
}

void UpdateServer::openTunnel(QSslSocket& socket, const QByteArray& head)
{
    m_targets.append(head.split(' ').value(1));
    socket.write("HTTP/1.1 200 Connection established\r\n\r\n");
    socket.flush();
    socket.startServerEncryption();
}

void UpdateServer::answer(QSslSocket& socket)
{
    const Answer given = m_answers.size() > 1 ? m_answers.takeFirst() : m_answers.constFirst();
    if (given.manner == Manner::HangUp)
        socket.abort();
    if (given.manner == Manner::HangUp || given.manner == Manner::SayNothing)
        return;
    const qsizetype surplus = given.manner == Manner::BreakOff || given.manner == Manner::Trickle ? 1000 : 0;
    socket.write("HTTP/1.1 " + given.status + "\r\nConnection: close\r\n" + given.headers);
    if (given.announceSize)
        socket.write("Content-Length: " + QByteArray::number(given.body.size() + surplus) + "\r\n");
    socket.write("\r\n");
    sendBody(socket, given);
}

void UpdateServer::sendBody(QSslSocket& socket, const Answer& given)
{
    if (given.manner == Manner::Trickle) {
        auto* const timer = new QTimer(&socket);
        connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write(" "); });
        timer->start(kTrickleMs);
        return;
    }
    if (given.manner == Manner::BreakOff) {
        socket.write(given.body);
        socket.flush();
        QTimer::singleShot(kTrickleMs, &socket, &QSslSocket::abort);
        return;
    }
    // Piece by piece, as the other side takes it: how much it took before it had enough is to be known.
    auto sent = std::make_shared<qint64>(0);
    const auto sendNext = [this, &socket, body = given.body, sent] {
        if (*sent >= body.size()) {
            socket.disconnectFromHost();
            return;
        }
        const qint64 written = socket.write(body.mid(*sent, kPieceBytes));
        *sent += written;
        m_sentBytes += written;
    };
    connect(&socket, &QSslSocket::encryptedBytesWritten, &socket, [&socket, sendNext] {
        if (socket.encryptedBytesToWrite() == 0 && socket.bytesToWrite() == 0)
            sendNext();
    });
    sendNext();
}
