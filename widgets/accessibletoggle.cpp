// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/accessibletoggle.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QVariant>
#include <QWidget>

namespace {

struct ToggleClass
{
    QAccessible::Role role;
    const char* property;
};

QHash<QString, ToggleClass>& toggleClasses()
{
    static QHash<QString, ToggleClass> classes;
    return classes;
}

class AccessibleToggle : public QAccessibleWidget
{
public:
    AccessibleToggle(QWidget* widget, const ToggleClass& kind)
        : QAccessibleWidget(widget, kind.role), m_property(kind.property)
    {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = widget()->property(m_property).toBool();
        return state;
    }

    QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (widget()->isEnabled())
            names.prepend(toggleAction());
        return names;
    }

    void doAction(const QString& actionName) override
    {
        if (actionName != toggleAction()) {
            QAccessibleWidget::doAction(actionName);
        } else if (widget()->isEnabled()) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
            QCoreApplication::sendEvent(widget(), &press);
        }
    }

private:
    const char* m_property;
};

QAccessibleInterface* makeToggle(const QString& className, QObject* object)
{
    auto* const widget = qobject_cast<QWidget*>(object);
    const auto kind = toggleClasses().constFind(className);
    if (widget == nullptr || kind == toggleClasses().constEnd())
        return nullptr;
    return new AccessibleToggle(widget, *kind);
}

} // namespace

void registerAccessibleToggle(const char* className, QAccessible::Role role, const char* property)
{
    if (toggleClasses().isEmpty())
        QAccessible::installFactory(&makeToggle);
    toggleClasses().insert(QLatin1String(className), {role, property});
}

void announceToggled(QWidget& widget)
{
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(&widget, changed);
    QAccessible::updateAccessibility(&event);
}
