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

/// Many times what the document can reasonably need.
inline constexpr qint64 kLargestBodyBytes = qint64{1024} * 1024;
inline constexpr int kTimeLimitMs = 15'000;
inline constexpr int kMostRedirections = 5;

/// Where the document is.
QUrl address();

/// Asks for the document. The reply belongs to network; the caller deletes it later. The answer comes from outside: the
/// reply ends with an error when its body, packed or not, or the whole exchange exceeds a limit. Redirections are
/// followed to https only.
///
/// @param timeLimitMs for the whole exchange
QNetworkReply* send(QNetworkAccessManager& network, int timeLimitMs = kTimeLimitMs);

/// A release as the document tells it. What is missing there, or is no string, is empty here.
struct Release
{
    QString version;
    /// Display texts.
    QString size;
    QString date;
    /// Where it is to be had.
    QString url;
    /// What has changed, each entry followed by a line break.
    QString changes;
};

/// The document in a server's answer; nothing when that is no JSON object.
std::optional<QJsonObject> parsed(const QByteArray& body);

/// The release that the document announces; nothing when it has none for this program.
std::optional<Release> release(const QJsonObject& document);

/// Whether the version is newer than the running one. Versions are compared as texts, code unit by code unit, so
/// "10.0.0" comes before "9.0.0" and yet after "1.0.0".
bool isNewer(const QString& version);

} // namespace updatecheck

/// Looks for a newer release without showing or logging anything. User-interface thread.
class SilentUpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit SilentUpdateCheck(QObject* parent, int timeLimitMs = updatecheck::kTimeLimitMs);
    ~SilentUpdateCheck() override;

    /// Asks the maker's server and returns at once.
    void start();

signals:
    /// There is a newer release. In every other case, failures included, nothing is emitted.
    void newerVersionFound(const QJsonObject& document);

private:
    void onFinished(QNetworkReply& reply);

    QNetworkAccessManager* m_network;
    int m_timeLimitMs;
};
