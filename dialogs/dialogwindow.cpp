// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/dialogwindow.h"

#include "platform/windowing/frameless_window.h"
#include "widgets/icons.h"

#include <QAbstractButton>
#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QScreen>
#include <QShortcut>

#include <algorithm>

namespace dialogwindow {

namespace {

constexpr QSize kLogoSize(24, 24);

QRect centredOn(const QRect& below, const QSize& size, const QRect& screen)
{
    QRect centred(QPoint(), size);
    centred.moveCenter(below.center());
    // The title bar with the close button stays within reach.
    centred.moveLeft(std::max(screen.left(), std::min(centred.left(), screen.right() + 1 - size.width())));
    centred.moveTop(std::max(screen.top(), std::min(centred.top(), screen.bottom() + 1 - size.height())));
    return centred;
}

} // namespace

platform::FramelessWindow& prepare(QMainWindow& window, QLabel* logo, QAbstractButton* closeButton)
{
    auto* const frame = new platform::FramelessWindow(&window);
    frame->setSystemButton(platform::FramelessWindow::SystemButton::Close, closeButton);
    window.layout()->setSizeConstraint(QLayout::SetFixedSize);
    new HoverIcons(closeButton, QStringLiteral("close"));
    QObject::connect(new QShortcut(Qt::Key_Escape, &window), &QShortcut::activated, &window, &QWidget::close);
    if (logo != nullptr)
        logo->setPixmap(
            QIcon(QStringLiteral(":/res/forms/images/logo.svg")).pixmap(kLogoSize, window.devicePixelRatioF()));
    return *frame;
}

void showOver(QMainWindow& window, const QWidget& below)
{
    window.setAttribute(Qt::WA_DeleteOnClose);
    window.setWindowModality(Qt::ApplicationModal);
    const QRect area = below.isMinimized() ? below.normalGeometry() : below.geometry();
    window.ensurePolished();
    const QRect centred = centredOn(area, window.sizeHint(), below.screen()->availableGeometry());
    window.move(centred.topLeft());
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace dialogwindow
