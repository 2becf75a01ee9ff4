#include "widgets/hovericons.h"

#include "widgets/icons.h"

#include <QAbstractButton>
#include <QEvent>

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
    m_button.setIcon(icons::named(m_name, light ? icons::Tone::Light : icons::Tone::Normal));
}
