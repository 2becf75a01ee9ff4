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

/// What the maker's server announces: a JSON object with one member for each system, of which this program reads "win".
/// User-interface thread; nothing waits.
namespace updatecheck {

/// Far more than the document needs.
inline constexpr qint64 kLargestBodyBytes = qint64{1024} * 1024;
inline constexpr int kTimeLimitMs = 15'000;
inline constexpr int kMostRedirections = 5;

QUrl address();

/// Requests the document. Child of network; the caller deletes it later. A body above the limit, packed or not, a
/// redirection to anything but https and a timeout of the whole exchange are errors of the reply.
QNetworkReply* send(QNetworkAccessManager& network, int timeLimitMs = kTimeLimitMs);

/// Strings that are missing in the document are empty.
struct Release
{
    QString version;
    /// Display texts.
    QString size;
    QString date;
    QString url;
    /// A line for each change.
    QString changes;
};

/// Nothing when the body is no JSON object.
std::optional<QJsonObject> parsed(const QByteArray& body);

std::optional<Release> release(const QJsonObject& document);

/// Compares the version with the running one as text: "10.0.0" is older than "9.0.0" and newer than "1.0.0".
bool isNewer(const QString& version);

} // namespace updatecheck

/// Looks for a newer release without showing or logging anything. User-interface thread.
class SilentUpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit SilentUpdateCheck(QObject* parent, int timeLimitMs = updatecheck::kTimeLimitMs);
    ~SilentUpdateCheck() override;

    void start();

signals:
    /// Nothing is emitted in any other case, failures included.
    void newerVersionFound(const QJsonObject& document);

private:
    void onFinished(QNetworkReply& reply);

    QNetworkAccessManager* m_network;
    int m_timeLimitMs;
};
