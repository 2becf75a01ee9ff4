// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QComboBox;

/// Style sheets draw the entries, the mouse wheel does not choose, and Escape closes an open list and nothing else.
void prepareComboBox(QComboBox& box);
