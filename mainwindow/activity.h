// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/recording/recordingsession.h"

#include <utility>

#include <functional>

/// What the program is doing, and what may begin meanwhile: the one answer to "may this start now?". User-interface
/// thread.
class Activity
{
public:
    /// Asked for with each question.
    struct Facts
    {
        std::function<RecordingState()> recording;
        std::function<bool()> isRecordingActive;
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

    explicit Activity(Facts facts) : m_facts(std::move(facts)) {}

    /// Whether nothing is recorded, from the countdown to the end of the file. Settings, folders and what is captured
    /// can be changed, boxes be shown, and the program be closed.
    bool isIdle() const { return m_facts.recording() == RecordingState::Idle; }

    /// Whether a recording runs and is not paused: the main window stays minimised.
    bool isRecordingActive() const { return m_facts.isRecordingActive(); }

    /// Whether a request to start or stop a recording counts. A dialog would be in a recording that starts.
    bool mayToggleRecording() const { return !isIdle() || !m_facts.isDialogOpen(); }

    /// Whether something may be laid over the desktop for a screenshot: it would be in a recording, and a dialog in the
    /// shot.
    bool mayTakeScreenshot() const { return isIdle() && !m_facts.isGrabbing() && !m_facts.isDialogOpen(); }

    /// Whether the region's frame may come back after a screenshot: a countdown may still be cancelled.
    bool mayRestoreRegionFrame() const { return isIdle() || m_facts.recording() == RecordingState::Countdown; }

    /// Whether a window that the user has not asked for may open, given whether the system keeps it out of captures.
    bool mayOpenUnasked(bool excludedFromCapture) const
    {
        if (m_facts.isSelecting() || m_facts.isDialogOpen() || m_facts.isMenuOpen())
            return false;
        return excludedFromCapture || (isIdle() && m_facts.isWindowShown());
    }

    /// The program closes as soon as the recording is over: nothing comes back to the screen.
    void setClosing() { m_isClosing = true; }
    bool isClosing() const { return m_isClosing; }

private:
    Facts m_facts;
    bool m_isClosing = false;
};
