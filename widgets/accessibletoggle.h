#pragma once

#include <QAccessible>

class QWidget;

/// Has assistive technology see every widget of a self-painted class as a control of the given role that is on or off.
/// The class's boolean property says which, its space bar changes it, and its accessible name names it.
///
/// Every constructor of the class may call it; className and property must be literals. For the thread of the user
/// interface.
void registerAccessibleToggle(const char* className, QAccessible::Role role, const char* property);

/// Tells assistive technology that the widget has been switched on or off.
void announceToggled(QWidget& widget);
