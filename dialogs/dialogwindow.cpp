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
    QRect place(QPoint(), size);
    place.moveCenter(below.center());
    // Its title bar, with the close button, is what has to be within reach.
    place.moveLeft(std::max(screen.left(), std::min(place.left(), screen.right() + 1 - size.width())));
    place.moveTop(std::max(screen.top(), std::min(place.top(), screen.bottom() + 1 - size.height())));
    return place;
}

} // namespace

platform::FramelessWindow& ready(QMainWindow& window, QLabel* logo, QAbstractButton* closeButton)
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
    const QRect place = centredOn(area, window.sizeHint(), below.screen()->availableGeometry());
    window.move(place.topLeft());
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace dialogwindow
