#include "mainwindow/activity.h"

#include <utility>

Activity::Activity(Facts facts) : m_facts(std::move(facts)) {}

bool Activity::isIdle() const
{
    return m_facts.recording() == RecordingState::Idle;
}

bool Activity::mayToggleRecording() const
{
    return !isIdle() || !m_facts.isDialogOpen();
}

bool Activity::mayTakeScreenshot() const
{
    return isIdle() && !m_facts.isGrabbing() && !m_facts.isDialogOpen();
}

bool Activity::mayRestoreRegionFrame() const
{
    return isIdle() || m_facts.recording() == RecordingState::Countdown;
}

bool Activity::mayOpenUnasked(bool excludedFromCapture) const
{
    if (m_facts.isSelecting() || m_facts.isDialogOpen() || m_facts.isMenuOpen())
        return false;
    return excludedFromCapture || (isIdle() && m_facts.isWindowShown());
}
