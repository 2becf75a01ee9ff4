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

/// Says whether there is a newer release, and which: a page that waits, one that is up to date, one with the release.
/// It installs nothing; the release's page opens in the web browser. Shown with dialogwindow::showOver().
/// User-interface thread.
///
/// A check that fails is shown as up to date. An answer that makes no sense leaves the page that waits.
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

    /// @param upgradeInfo the document to show; empty to have the window ask the maker's server itself
    /// @param timeLimitMs for what it asks
    SCUpgradeWindow(QWidget* parent, const QJsonObject& upgradeInfo, int timeLimitMs = updatecheck::kTimeLimitMs);
    ~SCUpgradeWindow() override;

signals:
    /// A document has decided the page, so that the user is told. A check that failed tells nothing.
    void answered();

protected:
    void changeEvent(QEvent* event) override;

private slots:
    // The first three are connected by their names when the form is set up.
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
