// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/desktopimage.h"

#include <utility>

DesktopImage::DesktopImage(X11Connection& connection, const QRect& area)
    : m_connection(connection), m_grabber(connection), m_excluded(connection), m_below(connection)
{
    setArea(area);
}

void DesktopImage::setArea(const QRect& area)
{
    m_grabber.setArea(area);
    forget();
}

void DesktopImage::forget()
{
    m_hidden = {};
    m_unseen = area();
    m_missed = area();
}

bool DesktopImage::prepare(std::uint64_t nowNs)
{
    m_excluded.look(nowNs);
    if (!m_excluded.present().intersects(area()))
        return false;
    m_below.require(nowNs);
    return m_below.isRequired();
}

QRegion DesktopImage::update(const QRegion& changed, std::uint64_t nowNs)
{
    m_below.rest(nowNs);
    const QRegion damaged = (changed + m_missed) & area();
    // A window that comes, moves or goes is damage.
    const bool isStill = damaged.isEmpty() && !m_excluded.isLookDue();
    const QRegion grabbed = isStill ? QRegion() : grab(damaged, nowNs);
    return grabbed + refreshHidden(nowNs);
}

/// @return what was grabbed, or was to be
QRegion DesktopImage::grab(const QRegion& damaged, std::uint64_t nowNs)
{
    m_excluded.look(nowNs);
    QRegion changed = damaged + (m_hidden - hiddenNow());
    const bool mayHide = m_excluded.areThereAny();
    const bool isComplete =
        m_grabber.grab(changed, mayHide ? ScreenGrabber::Former::IsKept : ScreenGrabber::Former::IsDropped);
    m_missed = isComplete ? QRegion() : changed;
    if (isComplete && !changed.isEmpty()) {
        if (mayHide)
            m_excluded.look(nowNs);
        hideAgain();
    }
    const QRegion before = std::exchange(m_hidden, hiddenNow());
    if (m_hidden != before)
        m_quietUpdates = 0;
    return changed;
}

/// What has come since the first look is in the second one, and what was grabbed of it goes.
void DesktopImage::hideAgain()
{
    const QRegion hidden = hiddenNow();
    m_unseen &= hidden;
    m_grabber.takeBack(hidden - m_unseen);
    m_grabber.blacken(m_unseen);
}

/// Where a window has been, the screen most likely shows what is below it. That is better than black.
QRegion DesktopImage::hiddenNow() const
{
    return (m_excluded.present() + (m_excluded.recent() - m_unseen)) & area() & m_connection.desktop();
}

QRegion DesktopImage::refreshHidden(std::uint64_t nowNs)
{
    if (m_excluded.present().intersects(area()))
        m_below.require(nowNs);
    if (m_hidden.isEmpty() || !m_below.isReady(nowNs) || !isRefreshDue())
        return {};
    QRegion changed = m_below.draw(m_hidden, m_excluded, m_grabber.pixels(), area().topLeft(), m_unseen);
    if (!changed.isEmpty())
        m_quietUpdates = 0;
    return changed;
}

/// Nobody reports what changes there. As long as nothing does, a look at every few frames finds it.
bool DesktopImage::isRefreshDue()
{
    constexpr int kQuiet = 15;
    ++m_quietUpdates;
    return m_quietUpdates <= kQuiet || m_quietUpdates % kQuietInterval == 0;
}
