// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/recording/recordingsession.h"

#include <utility>

#include <functional>

/// The one answer to "may this start now?". User-interface thread.
class Activity
{
public:
    /// Why a request is not carried out now.
    enum class Refusal
    {
        None,
        RecordingUnderWay,
        RecordingEnding,
        ScreenshotUnderWay
    };

    struct Facts
    {
        std::function<RecordingState()> recording;
        std::function<bool()> isRecordingActive;
        /// A region or a window is being selected, or a screenshot's frame is shown.
        std::function<bool()> isSelecting;
        std::function<bool()> isGrabbing;
        /// One that waits for its answer: a message, the choice of a folder.
        std::function<bool()> isDialogOpen;
        /// A menu, a list, or any dialog.
        std::function<bool()> isMenuOpen;
        std::function<bool()> isWindowShown;
    };

    explicit Activity(Facts facts) : m_facts(std::move(facts)) {}

    /// Neither counting down, recording nor ending: settings and capture can be changed.
    bool isIdle() const { return m_facts.recording() == RecordingState::Idle; }

    /// The main window stays minimised.
    bool isRecordingActive() const { return m_facts.isRecordingActive(); }

    Refusal recordingRefusal() const { return isEnding() ? Refusal::RecordingEnding : Refusal::None; }

    /// A frame would be recorded.
    bool mayTakeScreenshot() const { return screenshotRefusal() == Refusal::None; }

    Refusal screenshotRefusal() const
    {
        if (!isIdle())
            return isEnding() ? Refusal::RecordingEnding : Refusal::RecordingUnderWay;
        return m_facts.isGrabbing() ? Refusal::ScreenshotUnderWay : Refusal::None;
    }

    /// At the beginning of a countdown as well: the window that was picked for it.
    bool mayChooseArea() const { return mayRestoreRegionFrame(); }

    bool mayRestoreRegionFrame() const { return isIdle() || m_facts.recording() == RecordingState::Countdown; }

    /// Whether a window that the user has not asked for may open.
    bool mayOpenUnasked(bool excludedFromCapture) const
    {
        if (m_facts.isSelecting() || m_facts.isDialogOpen() || m_facts.isMenuOpen())
            return false;
        return excludedFromCapture || (isIdle() && m_facts.isWindowShown());
    }

    /// The program closes after the recording: no window is restored.
    void setClosing() { m_isClosing = true; }
    bool isClosing() const { return m_isClosing; }

private:
    bool isEnding() const
    {
        return m_facts.recording() == RecordingState::Stopping || m_facts.recording() == RecordingState::Ended;
    }

    Facts m_facts;
    bool m_isClosing = false;
};
