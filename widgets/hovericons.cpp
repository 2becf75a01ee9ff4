#include "widgets/hovericons.h"

#include <QAbstractButton>
#include <QEvent>
#include <QIcon>

HoverIcons::HoverIcons(QAbstractButton* button, const QString& name) : QObject(button), m_button(*button), m_name(name)
{
    button->installEventFilter(this);
    showIcon(m_button.underMouse());
}

bool HoverIcons::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave)
        showIcon(event->type() == QEvent::Enter);
    return false;
}

void HoverIcons::showIcon(bool light)
{
    m_button.setIcon(QIcon(QStringLiteral(":/res/forms/images/%1%2.svg").arg(m_name, light ? "-white" : "")));
}
