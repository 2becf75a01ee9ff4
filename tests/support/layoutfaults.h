// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

class QWidget;

/// What is wrong with how a visible window is laid out, one sentence for each fault, empty where all is well: a part
/// that reaches beyond the one it is in, a text that is larger than the room in its widget, a letter that no
/// font has, two controls over one another. What the user wrote or chose may be cut off: the texts of fields and lists.
QStringList layoutFaults(const QWidget& window);
