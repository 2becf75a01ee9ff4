// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/updatecheck.h"

#include "app/appidentity.h"
#include "app/webaddresses.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace updatecheck {

namespace {

/// @param announced the size that the server gives beforehand, below zero when it gives none
void refuseTooLarge(QNetworkReply& reply, qint64 received, qint64 announced)
{
    // What waits to be read has been unpacked, and may be far more than what was received.
    if (reply.isRunning() && std::max({received, announced, reply.bytesAvailable()}) > kLargestBodyBytes)
        reply.abort();
}

QString joined(const QJsonArray& entries)
{
    QString text;
    for (const QJsonValue entry : entries)
        text += entry.toString() + u'\n';
    return text;
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

std::optional<QJsonObject> parsed(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

std::optional<Release> release(const QJsonObject& document)
{
    const auto found = document.constFind(QLatin1String("win"));
    if (found == document.constEnd())
        return std::nullopt;
    const QJsonObject entry = found->toObject();
    const auto text = [&entry](const char* key) { return entry.value(QLatin1String(key)).toString(); };
    return Release{text("version"), text("size"), text("date"), text("url"),
                   joined(entry.value(QLatin1String("change")).toArray())};
}

bool isNewer(const QString& version)
{
    return QString::fromLatin1(appidentity::kVersion) < version;
}

} // namespace updatecheck

SilentUpdateCheck::SilentUpdateCheck(QObject* parent, int timeLimitMs)
    : QObject(parent), m_network(new QNetworkAccessManager(this)), m_timeLimitMs(timeLimitMs)
{}

void SilentUpdateCheck::start()
{
    QNetworkReply* const reply = updatecheck::send(*m_network, m_timeLimitMs);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { onFinished(*reply); });
}

void SilentUpdateCheck::onFinished(QNetworkReply& reply)
{
    reply.deleteLater();
    if (reply.error() != QNetworkReply::NoError)
        return;
    const auto document = updatecheck::parsed(reply.readAll());
    const auto release = document ? updatecheck::release(*document) : std::nullopt;
    if (release && updatecheck::isNewer(release->version))
        emit newerVersionFound(*document);
}
