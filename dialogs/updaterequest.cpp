#include "dialogs/updaterequest.h"

#include "app/webaddresses.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace updaterequest {

namespace {

/// @param announced the size that the server gives beforehand, below zero when it gives none
void refuseTooLarge(QNetworkReply& reply, qint64 received, qint64 announced)
{
    // What waits to be read has been unpacked, and may be far more than what was received.
    if (reply.isRunning() && std::max({received, announced, reply.bytesAvailable()}) > kLargestBodyBytes)
        reply.abort();
}

} // namespace

QUrl address()
{
    return QUrl(QStringLiteral("https://%1/kestrano/upgrade.json").arg(QLatin1String(webaddresses::kUpdateHost)));
}

QNetworkReply* send(QNetworkAccessManager& network, int timeLimitMs)
{
    QNetworkRequest request(address());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(kMostRedirections);
    QNetworkReply* const reply = network.get(request);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply,
                     [reply](qint64 received, qint64 announced) { refuseTooLarge(*reply, received, announced); });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] { refuseTooLarge(*reply, 0, 0); });
    // A limit for the whole: a server that sends a little now and then would never be idle.
    QTimer::singleShot(timeLimitMs, reply, &QNetworkReply::abort);
    return reply;
}

} // namespace updaterequest
