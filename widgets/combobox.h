// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QComboBox;

/// Lets the program's style sheets draw the entries of a form's box, and keeps the mouse wheel from choosing in it.
void prepareComboBox(QComboBox& box);
