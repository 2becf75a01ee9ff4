// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QNetworkProxy>
#include <QSslConfiguration>
#include <QTcpServer>

class QSslSocket;

/// The maker's download server, on this machine: HTTPS with a certificate of its own that was made for the server's
/// name while the tests were built. While it lives it is the proxy of this process: what is asked of the
/// maker's server comes here, whatever its name.
class UpdateServer : public QTcpServer
{
    Q_OBJECT

public:
    enum class Manner
    {
        Answer,
        BreakOff,   ///< announces more than it sends, and hangs up
        HangUp,     ///< hangs up when it has been asked
        SayNothing, ///< takes the request and never answers
        Trickle     ///< sends a byte now and then, for ever
    };

    struct Answer
    {
        QByteArray status = "200 OK";
        QByteArray body;
        /// Further lines, each with its end.
        QByteArray headers;
        Manner manner = Manner::Answer;
        /// Whether the body's size is announced before it.
        bool announceSize = true;
    };

    /// @param trusted whether this process trusts the server's certificate
    explicit UpdateServer(bool trusted = true);
    ~UpdateServer() override;

    /// What is answered from now on. A list is gone through; its last answer stays.
    void setAnswers(const QList<Answer>& answers) { m_answers = answers; }
    void setAnswer(const QByteArray& body) { setAnswers({Answer{"200 OK", body, {}, Manner::Answer, true}}); }

    /// The heads of the requests that have come, and when they came, in milliseconds since the server was made.
    const QList<QByteArray>& requests() const { return m_requests; }
    const QList<qint64>& requestTimesMs() const { return m_requestTimesMs; }
    /// The hosts and ports to which connections were asked for.
    const QList<QByteArray>& targets() const { return m_targets; }
    /// How many bytes of bodies have been handed to the system.
    qint64 sentBytes() const { return m_sentBytes; }
    /// Whether somebody is connected.
    bool isConnected() const;

protected:
    void incomingConnection(qintptr handle) override;

private:
    void onReadyRead(QSslSocket& socket);
    void openTunnel(QSslSocket& socket, const QByteArray& head);
    void answer(QSslSocket& socket);
    void sendBody(QSslSocket& socket, const Answer& given);

    QByteArray m_certificateFile;
    QByteArray m_keyFile;
    QSslConfiguration m_previousConfiguration;
    QNetworkProxy m_previousProxy;
    QElapsedTimer m_clock;
    QList<Answer> m_answers;
    QList<QByteArray> m_requests;
    QList<qint64> m_requestTimesMs;
    QList<QByteArray> m_targets;
    qint64 m_sentBytes = 0;
};
