#pragma once

class QWidget;

/// The tool tip that is on the screen; null when there is none.
QWidget* visibleToolTip();
