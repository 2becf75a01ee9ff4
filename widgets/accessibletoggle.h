// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>

class QWidget;

/// Exposes every widget of a self-painted class to assistive technology as a control that is on or off, by a boolean
/// property, and is toggled by the space bar. className and property must be literals. User-interface thread.
void registerAccessibleToggle(const char* className, QAccessible::Role role, const char* property);

/// Notifies assistive technology of a change.
void announceToggled(QWidget& widget);
