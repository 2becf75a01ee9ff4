#include "dialogs/silentupdatecheck.h"

#include "dialogs/updatedocument.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

SilentUpdateCheck::SilentUpdateCheck(QObject* parent, int timeLimitMs)
    : QObject(parent), m_network(new QNetworkAccessManager(this)), m_timeLimitMs(timeLimitMs)
{}

SilentUpdateCheck::~SilentUpdateCheck() = default;

void SilentUpdateCheck::start()
{
    QNetworkReply* const reply = updaterequest::send(*m_network, m_timeLimitMs);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { onFinished(*reply); });
}

void SilentUpdateCheck::onFinished(QNetworkReply& reply)
{
    reply.deleteLater();
    if (reply.error() != QNetworkReply::NoError)
        return;
    const auto document = updatedocument::parsed(reply.readAll());
    const auto release = document ? updatedocument::release(*document) : std::nullopt;
    if (release && updatedocument::isNewer(release->version))
        emit newerVersionFound(*document);
}
