#pragma once

#include <QDateTime>
#include <QSize>
#include <QString>

/// What the user has chosen for the recording that is about to start.
struct RecordingChoices
{
    QString fileName;
    /// Absolute path of the save folder.
    QString folder;
    /// Position in the list of formats; a list without entries counts as 0.
    int formatIndex = 0;
    /// The capture area in logical pixels.
    QSize areaSize;
    int widthPx = 0;
    int heightPx = 0;
    bool showCursor = false;
    bool pointerEffects = false;
};

/// What a recording session asks of its surroundings: the windows, the countdown, the clock. In the program it is the
/// main window.
class RecordingStage
{
public:
    virtual ~RecordingStage() = default;

    virtual void minimiseWindow() = 0;
    virtual bool isWindowMinimised() const = 0;
    virtual void restoreWindow() = 0;

    /// Takes away what was shown for the recording: the floating bar, the region's frame.
    virtual void hideOverlays() = 0;

    /// Counts down over the capture area, events running meanwhile; returns when it is over or was cancelled.
    virtual void countDown(int from) = 0;

    /// Ends a running countDown() early and takes its window away.
    virtual void cancelCountdown() = 0;

    /// Sets the engine to the capture area, size and target. False when that failed.
    virtual bool prepareCapture() = 0;

    virtual RecordingChoices choices() const = 0;

    /// Keeps the program's own windows out of the picture, as far as the system can.
    virtual void setExcludedFromCapture(bool excluded) = 0;

    /// Starts or stops the tick of one second that ends at RecordingSession::onTick().
    virtual void setClockRunning(bool running) = 0;

    /// Makes a running clock stand still, or go on where it stood.
    virtual void setClockPaused(bool paused) = 0;

    /// Local time, from which a recording without a typed name gets its name.
    virtual QDateTime now() const = 0;
};
