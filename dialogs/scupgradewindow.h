// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dialogs/updatecheck.h"

#include <QJsonObject>
#include <QMainWindow>
#include <QNetworkReply>

#include <memory>

class QNetworkAccessManager;

namespace Ui {
class SCUpgradeWindow;
}

/// Shows the result of the update check. A failed check is shown as up to date, with a line that says so; a malformed
/// answer leaves the waiting page. Shown with dialogwindow::showOver(). User-interface thread.
class SCUpgradeWindow : public QMainWindow
{
    Q_OBJECT

public:
    enum Page
    {
        Waiting = 0,
        UpToDate = 1,
        NewVersion = 2
    };

    /// @param upgradeInfo the document to show; when empty, the window sends a request
    SCUpgradeWindow(QWidget* parent, const QJsonObject& upgradeInfo, int timeLimitMs = updatecheck::kTimeLimitMs);
    ~SCUpgradeWindow() override;

signals:
    /// The user has been notified by a document, not by a failed check.
    void answered();

protected:
    void changeEvent(QEvent* event) override;

private slots:
    // The first three are connected by name.
    void on_closeBtn_clicked();
    void on_laterBtn_clicked();
    void on_upgradeBtn_clicked();
    void onNetworkReplyFinished();
    void onNetworkError(QNetworkReply::NetworkError error);

private:
    void check(int timeLimitMs);
    void showDocument(const QJsonObject& document);

    std::unique_ptr<Ui::SCUpgradeWindow> m_ui;
    QNetworkAccessManager* m_network = nullptr;
    QJsonObject m_upgradeInfo;
    QString m_downloadUrl;
};
