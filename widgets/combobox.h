// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QComboBox;

/// Style sheets draw the entries, and the mouse wheel does not choose.
void prepareComboBox(QComboBox& box);
