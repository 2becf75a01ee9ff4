#pragma once

#include "mainwindow/recording/recordingsession.h"

#include <functional>

/// What the program is doing, and what may begin meanwhile: the one answer to "may this start now?". The facts are
/// asked for with each question. User-interface thread.
class Activity
{
public:
    struct Facts
    {
        std::function<RecordingState()> recording;
        /// A region or a window is being selected, or a screenshot's frame is shown.
        std::function<bool()> isSelecting;
        /// A screenshot is being grabbed.
        std::function<bool()> isGrabbing;
        /// A modal window of the program's.
        std::function<bool()> isDialogOpen;
        std::function<bool()> isMenuOpen;
        /// The main window is on the screen and not minimised.
        std::function<bool()> isWindowShown;
    };

    explicit Activity(Facts facts);

    /// Whether nothing is recorded, from the countdown to the end of the file. Settings, folders and what is captured
    /// can be changed, boxes be shown, and the program be closed.
    bool isIdle() const;

    /// Whether a request to start or stop a recording counts. A dialog would be in a recording that starts; one that
    /// runs can be stopped.
    bool mayToggleRecording() const;

    /// Whether something may be laid over the desktop for a screenshot.
    bool mayTakeScreenshot() const;

    /// Whether the region's frame may come back after a screenshot: a countdown may still be cancelled.
    bool mayRestoreRegionFrame() const;

    /// Whether a window that the user has not asked for may open, given whether the system keeps it out of captures.
    bool mayOpenUnasked(bool excludedFromCapture) const;

    /// The program closes as soon as the recording is over: nothing comes back to the screen.
    void setClosing() { m_isClosing = true; }
    bool isClosing() const { return m_isClosing; }

private:
    Facts m_facts;
    bool m_isClosing = false;
};
