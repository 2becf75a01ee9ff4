// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QSize>
#include <QString>

struct RecordingChoices
{
    QString fileName;
    QString folder;
    int formatIndex = 0;
    QSize areaSize;
    int widthPx = 0;
    int heightPx = 0;
    bool showCursor = false;
    bool pointerEffects = false;
    QDateTime now;
};

/// What a recording session asks of windows, countdown and capture; RecordingView in the program.
class RecordingStage
{
public:
    virtual ~RecordingStage() = default;

    virtual void minimiseWindow() = 0;
    virtual bool isWindowMinimised() const = 0;
    virtual void restoreWindow() = 0;

    virtual void hideOverlays() = 0;

    /// Runs events until the countdown is over or cancelled.
    virtual void countDown(int from) = 0;
    virtual void cancelCountdown() = 0;

    virtual bool prepareCapture() = 0;

    virtual RecordingChoices choices() const = 0;

    /// As far as the system can.
    virtual void setExcludedFromCapture(bool excluded) = 0;
};
