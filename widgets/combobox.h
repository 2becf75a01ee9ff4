#pragma once

class QComboBox;

/// Readies a form's box for the program's style sheets, which draw its entries, and keeps the mouse wheel, which is
/// turned to scroll, from choosing in it.
void readyComboBox(QComboBox& box);
