// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <optional>

class QByteArray;
class QNetworkAccessManager;
class QNetworkReply;
class QUrl;

/// The JSON document of the maker's server, of which the member "win" is read. User-interface thread; nothing waits.
namespace updatecheck {

inline constexpr qint64 kLargestBodyBytes = qint64{1024} * 1024;
inline constexpr int kTimeLimitMs = 15'000;
inline constexpr int kMostRedirections = 5;

QUrl address();

/// Child of network; the caller deletes the reply. Too large a body, packed or not, a redirection to anything but https
/// and a timeout of the whole exchange are errors of the reply.
QNetworkReply* send(QNetworkAccessManager& network, int timeLimitMs = kTimeLimitMs);

/// Missing strings are empty.
struct Release
{
    QString version;
    /// For display.
    QString size;
    QString date;
    QString url;
    /// A line for each change.
    QString changes;
};

/// Nothing when the body is no JSON object.
std::optional<QJsonObject> parsed(const QByteArray& body);

std::optional<Release> release(const QJsonObject& document);

/// Compares as text with the running version: "10.0.0" is older than "9.0.0".
bool isNewer(const QString& version);

} // namespace updatecheck

/// A silent check. User-interface thread.
class SilentUpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit SilentUpdateCheck(QObject* parent, int timeLimitMs = updatecheck::kTimeLimitMs);

    void start();

signals:
    /// Emitted in no other case.
    void newerVersionFound(const QJsonObject& document);

private:
    void onFinished(QNetworkReply& reply);

    QNetworkAccessManager* m_network;
    int m_timeLimitMs;
};
