// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/formicons.h"

#include "widgets/icons.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>

namespace {

QString iconName(const QObject& widget)
{
    return widget.property("iconName").toString();
}

} // namespace

FormIcons::FormIcons(QWidget* form) : QObject(form), m_form(*form)
{
    for (QPushButton* const button : m_form.findChildren<QPushButton*>()) {
        if (const QString name = iconName(*button); !name.isEmpty())
            new HoverIcons(button, name);
    }
    showLabels();
    m_form.installEventFilter(this);
}

void FormIcons::showLabels()
{
    for (QLabel* const label : m_form.findChildren<QLabel*>()) {
        const QString name = iconName(*label);
        if (name.isEmpty())
            continue;
        const QIcon icon = name.startsWith(QLatin1Char(':')) ? QIcon(name) : icons::named(name);
        label->setPixmap(icon.pixmap(label->minimumSize(), label->devicePixelRatioF()));
    }
}

bool FormIcons::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::ScreenChangeInternal)
        showLabels();
    return false;
}
