// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/scupgradewindow.h"

#include "app/appidentity.h"
#include "app/sclogger.h"
#include "dialogs/dialogwindow.h"
#include "platform/windowing/frameless_window.h"
#include "ui_scupgradewindow.h"
#include "widgets/desktopservices.h"
#include "widgets/stylesheet.h"

#include <QEvent>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QTextDocument>

SCUpgradeWindow::SCUpgradeWindow(QWidget* parent, const QJsonObject& upgradeInfo, int timeLimitMs)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::SCUpgradeWindow>()), m_upgradeInfo(upgradeInfo)
{
    m_ui->setupUi(this);
    dialogwindow::prepare(*this, m_ui->logoLabel, m_ui->closeBtn).setTitleBar(m_ui->titleBar);
    m_ui->upgradeInfoTextEdit->setTextInteractionFlags(Qt::NoTextInteraction);
    m_ui->upgradeInfoTextEdit->viewport()->setCursor(Qt::ArrowCursor);
    m_ui->upgradeInfoTextEdit->document()->setDocumentMargin(0);
    m_ui->stackedWidget->setCurrentIndex(Waiting);
    applyStyleSheetIfReadable(*this, QStringLiteral(":/res/style/upgrade-window.qss"));
    if (m_upgradeInfo.isEmpty())
        check(timeLimitMs);
    else
        showDocument(m_upgradeInfo);
}

SCUpgradeWindow::~SCUpgradeWindow() = default;

void SCUpgradeWindow::changeEvent(QEvent* event)
{
    // A window that still waits to be shown has been made in the language from before.
    if (event->type() == QEvent::LanguageChange)
        m_ui->retranslateUi(this);
    QMainWindow::changeEvent(event);
}

void SCUpgradeWindow::check(int timeLimitMs)
{
    if (m_network == nullptr)
        m_network = new QNetworkAccessManager(this);
    const QNetworkReply* const reply = updatecheck::send(*m_network, timeLimitMs);
    connect(reply, &QNetworkReply::finished, this, &SCUpgradeWindow::onNetworkReplyFinished);
    connect(reply, &QNetworkReply::errorOccurred, this, &SCUpgradeWindow::onNetworkError);
}

void SCUpgradeWindow::onNetworkError(QNetworkReply::NetworkError error)
{
    const char* const name = QMetaEnum::fromType<QNetworkReply::NetworkError>().valueToKey(error);
    SCLogger::debug(QStringLiteral("Network error: %1").arg(QLatin1String(name)));
    m_ui->notCheckedLabel->show();
    m_ui->stackedWidget->setCurrentIndex(UpToDate);
}

void SCUpgradeWindow::onNetworkReplyFinished()
{
    auto* const reply = qobject_cast<QNetworkReply*>(sender());
    if (reply == nullptr)
        return;
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError)
        return;
    if (const auto document = updatecheck::parsed(reply->readAll()))
        showDocument(*document);
}

void SCUpgradeWindow::showDocument(const QJsonObject& document)
{
    if (document.isEmpty()) {
        SCLogger::debug(QStringLiteral("Failed to parse JSON data"));
        return;
    }
    const auto release = updatecheck::release(document);
    if (!release) {
        SCLogger::debug(QStringLiteral("No Windows upgrade info found"));
        return;
    }
    if (!updatecheck::isNewer(release->version)) {
        m_ui->currentVersionLabel->setText(QLatin1String(appidentity::kVersion));
        m_ui->stackedWidget->setCurrentIndex(UpToDate);
        emit answered();
        return;
    }
    m_ui->newVersionLabel->setText(release->version);
    m_ui->sizeLabel->setText(release->size);
    m_ui->releaseDateLabel->setText(release->date);
    m_downloadUrl = release->url;
    m_ui->upgradeInfoTextEdit->setPlainText(release->changes);
    m_ui->stackedWidget->setCurrentIndex(NewVersion);
    m_ui->upgradeBtn->setFocus();
    emit answered();
}

void SCUpgradeWindow::on_closeBtn_clicked()
{
    close();
}

void SCUpgradeWindow::on_laterBtn_clicked()
{
    close();
}

void SCUpgradeWindow::on_upgradeBtn_clicked()
{
    if (!m_downloadUrl.isEmpty())
        openWebPage(m_downloadUrl);
}
