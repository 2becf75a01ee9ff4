#pragma once

#include "mainwindow/capture/capturearea.h"

/// The primary screen as it is now; a session without one gets an empty screen.
CaptureScreen primaryScreen();
