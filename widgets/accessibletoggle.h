// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>

class QWidget;

/// Exposes widgets of a self-painted class to assistive technology as an on/off control by a boolean property, toggled
/// by the space bar. className and property must be literals. User-interface thread.
void registerAccessibleToggle(const char* className, QAccessible::Role role, const char* property);

/// Notifies assistive technology of a change.
void announceToggled(QWidget& widget);
