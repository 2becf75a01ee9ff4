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
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
        showIcon(event->type() == QEvent::Enter);
        break;
    case QEvent::EnabledChange:
        showIcon(m_button.underMouse());
        break;
    default:
        break;
    }
    return false;
}

void HoverIcons::showIcon(bool isPointedAt)
{
    const bool light = isPointedAt && m_button.isEnabled();
    m_button.setIcon(icons::named(m_name, light ? icons::Tone::Light : icons::Tone::Normal));
}
