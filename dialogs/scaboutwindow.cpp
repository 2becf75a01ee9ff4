// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/scaboutwindow.h"

#include "app/appidentity.h"
#include "app/webaddresses.h"
#include "dialogs/dialogwindow.h"
#include "ui_scaboutwindow.h"
#include "widgets/desktopservices.h"
#include "widgets/stylesheet.h"

#include <QMouseEvent>
#include <QTextDocument>
#include <QTextOption>

SCAboutWindow::SCAboutWindow(QWidget* parent) : QMainWindow(parent), m_ui(std::make_unique<Ui::SCAboutWindow>())
{
    m_ui->setupUi(this);
    dialogwindow::prepare(*this, nullptr, m_ui->closeBtn);
    applyStyleSheetIfReadable(*this, QStringLiteral(":/res/style/about-window.qss"));
    const QIcon logo(QStringLiteral(":/res/forms/images/logo.svg"));
    m_ui->logoLabel->setPixmap(logo.pixmap(m_ui->logoLabel->minimumSize(), devicePixelRatioF()));
    m_ui->versionLabel->setText(QLatin1String(appidentity::kVersion));
    m_ui->descriptionEdit->setTextInteractionFlags(Qt::NoTextInteraction);
    m_ui->descriptionEdit->viewport()->setCursor(Qt::ArrowCursor);
    m_ui->descriptionEdit->document()->setDefaultTextOption(QTextOption(Qt::AlignHCenter));
    showLink();
    m_ui->titleBar->installEventFilter(this);
    m_ui->homeURLLabel->setFocus();
}

SCAboutWindow::~SCAboutWindow() = default;

void SCAboutWindow::showLink()
{
    const QString address = QString::fromLatin1(webaddresses::kHomePage).toHtmlEscaped();
    m_ui->homeURLLabel->setText(
        QStringLiteral("<a style=\"color: #F35627; text-decoration: underline;\" href=\"%1\">%1</a>").arg(address));
    // Opened by the label itself, once; the slot is for a label that only reports.
    m_ui->homeURLLabel->setOpenExternalLinks(true);
}

bool SCAboutWindow::eventFilter(QObject* watched, QEvent* event)
{
    return watched == m_ui->titleBar ? onTitleBar(*event) : QMainWindow::eventFilter(watched, event);
}

bool SCAboutWindow::onTitleBar(const QEvent& event)
{
    const bool isPress = event.type() == QEvent::MouseButtonPress;
    if (!isPress && event.type() != QEvent::MouseMove)
        return false;
    const auto& mouse = static_cast<const QMouseEvent&>(event);
    if (isPress ? mouse.button() != Qt::LeftButton : !mouse.buttons().testFlag(Qt::LeftButton))
        return false;
    if (isPress)
        m_grip = mouse.globalPosition().toPoint() - frameGeometry().topLeft();
    else
        move(mouse.globalPosition().toPoint() - m_grip);
    return true;
}

void SCAboutWindow::on_closeBtn_clicked()
{
    close();
}

void SCAboutWindow::on_homeURLLabel_linkActivated(const QString& link)
{
    openWebPage(link);
}
