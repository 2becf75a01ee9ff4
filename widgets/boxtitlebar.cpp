// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/boxtitlebar.h"

#include "platform/windowing/frameless_window.h"
#include "widgets/icons.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace {

constexpr int kHeightPx = 40;
constexpr QSize kLogoSize(24, 24);
constexpr QSize kButtonSize(32, 32);
constexpr QSize kIconSize(20, 20);
constexpr QMargins kMargins(12, 0, 8, 0);
constexpr int kSpacingPx = 4;

QPushButton* makeCloseButton(QMessageBox& box, QWidget* parent)
{
    auto* const button = new QPushButton(parent);
    button->setObjectName(QStringLiteral("closeBtn"));
    button->setFixedSize(kButtonSize);
    button->setIconSize(kIconSize);
    button->setAutoDefault(false);
    button->setToolTip(BoxTitleBar::tr("Close Window"));
    button->setAccessibleName(BoxTitleBar::tr("Close Window"));
    new HoverIcons(button, QStringLiteral("close"));
    QObject::connect(button, &QPushButton::clicked, &box, &QWidget::close);
    return button;
}

} // namespace

BoxTitleBar::BoxTitleBar(QMessageBox& box) : QFrame(&box)
{
    setObjectName(QStringLiteral("titleBar"));
    setFixedHeight(kHeightPx);
    addContent(box);
    box.installEventFilter(this);
    auto* const frame = new platform::FramelessWindow(&box);
    frame->setTitleBar(this);
    frame->setSystemButton(platform::FramelessWindow::SystemButton::Close, findChild<QPushButton*>());
}

void BoxTitleBar::addContent(QMessageBox& box)
{
    auto* const logo = new QLabel(this);
    logo->setFixedSize(kLogoSize);
    logo->setPixmap(icons::named(QStringLiteral("logo")).pixmap(kLogoSize, box.devicePixelRatioF()));
    auto* const title = new QLabel(box.windowTitle(), this);
    title->setObjectName(QStringLiteral("titleLabel"));
    title->setTextFormat(Qt::PlainText);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargins);
    layout->setSpacing(kSpacingPx);
    layout->addWidget(logo);
    layout->addWidget(title);
    layout->addStretch();
    layout->addWidget(makeCloseButton(box, this));
}

/// In the one place of the box's layout that the box does not fill itself. It makes a new layout whenever its style
/// changes, the last time right before it is shown.
bool BoxTitleBar::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show)
        static_cast<QWidget*>(watched)->layout()->setMenuBar(this);
    return false;
}
