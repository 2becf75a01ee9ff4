// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QComboBox;

/// The keys for one of two hotkeys: "None", shown translated, and "F1" to "F10" without the key of the other hotkey.
namespace hotkeychoices {

inline constexpr char kNone[] = "None";

/// Fills the box without its signals and selects own, or "None".
void fill(QComboBox& box, const QString& own, const QString& other);

/// The chosen key as it is stored.
QString chosen(const QComboBox& box);

} // namespace hotkeychoices
