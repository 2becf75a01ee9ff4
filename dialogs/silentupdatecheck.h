#pragma once

#include "dialogs/updaterequest.h"

#include <QJsonObject>
#include <QObject>

class QNetworkAccessManager;
class QNetworkReply;

/// Looks for a newer release without showing or logging anything. User-interface thread.
class SilentUpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit SilentUpdateCheck(QObject* parent, int timeLimitMs = updaterequest::kTimeLimitMs);
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
