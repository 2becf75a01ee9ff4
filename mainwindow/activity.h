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
        std::function<bool()> isGrabbing;
        std::function<bool()> isDialogOpen;
        std::function<bool()> isMenuOpen;
        std::function<bool()> isWindowShown;
    };

    explicit Activity(Facts facts) : m_facts(std::move(facts)) {}

    /// No recording, from its countdown to the end of its file: settings and what is captured can be changed.
    bool isIdle() const { return m_facts.recording() == RecordingState::Idle; }

    /// A recording runs and is not paused: the main window stays minimised.
    bool isRecordingActive() const { return m_facts.isRecordingActive(); }

    /// A dialog would be in a recording that starts.
    bool mayToggleRecording() const { return !isIdle() || !m_facts.isDialogOpen(); }

    /// The frame would be in a recording, and a dialog in the shot.
    bool mayTakeScreenshot() const { return isIdle() && !m_facts.isGrabbing() && !m_facts.isDialogOpen(); }

    /// After a screenshot: a countdown may still be cancelled.
    bool mayRestoreRegionFrame() const { return isIdle() || m_facts.recording() == RecordingState::Countdown; }

    /// Whether a window that the user has not asked for may open, given whether the system keeps it out of captures.
    bool mayOpenUnasked(bool excludedFromCapture) const
    {
        if (m_facts.isSelecting() || m_facts.isDialogOpen() || m_facts.isMenuOpen())
            return false;
        return excludedFromCapture || (isIdle() && m_facts.isWindowShown());
    }

    /// The program closes as soon as the recording is over: no window is restored.
    void setClosing() { m_isClosing = true; }
    bool isClosing() const { return m_isClosing; }

private:
    Facts m_facts;
    bool m_isClosing = false;
};
