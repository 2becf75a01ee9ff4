// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QSize>
#include <QString>

/// What the user has chosen for the recording that is about to start.
struct RecordingChoices
{
    QString fileName;
    QString folder;
    int formatIndex = 0;
    /// The capture area in logical pixels.
    QSize areaSize;
    int widthPx = 0;
    int heightPx = 0;
    bool showCursor = false;
    bool pointerEffects = false;
    /// Local time, the name of a recording without one.
    QDateTime now;
};

/// What a recording session asks of its surroundings: windows, countdown and capture. In the program it is
/// RecordingView.
class RecordingStage
{
public:
    virtual ~RecordingStage() = default;

    virtual void minimiseWindow() = 0;
    virtual bool isWindowMinimised() const = 0;
    virtual void restoreWindow() = 0;

    virtual void hideOverlays() = 0;

    /// Returns, having run events, when the countdown is over or was cancelled.
    virtual void countDown(int from) = 0;
    virtual void cancelCountdown() = 0;

    /// Sets the engine to the capture area, size and target. False when that failed.
    virtual bool prepareCapture() = 0;

    virtual RecordingChoices choices() const = 0;

    /// Keeps the program's own windows out of captures, as far as the system can.
    virtual void setExcludedFromCapture(bool excluded) = 0;
};
