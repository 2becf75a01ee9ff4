#pragma once

#include <QString>

class QComboBox;

/// The keys that can be chosen for one of the program's two hotkeys: "None" and "F1" to "F10", without the key of the
/// other hotkey, so that both are never the same. "None" is shown translated and stored as it stands here.
namespace hotkeychoices {

inline constexpr char kNone[] = "None";

/// Fills the box without its signals, and selects own where it is among the choices; else "None", which comes first.
void fill(QComboBox& box, const QString& own, const QString& other);

/// The chosen key as it is stored.
QString chosen(const QComboBox& box);

} // namespace hotkeychoices
