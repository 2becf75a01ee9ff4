// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/x11/x11connection.h"
#include "platform/windowing/excluded_windows.h"

#include <QRegion>

#include <cstdint>
#include <vector>

/// Where the windows are that frames have to be without (platform/windowing/excluded_windows.h), in pixels of the
/// desktop. One thread at a time.
class ExcludedAreas
{
public:
    /// How long a window that has gone or has moved may still be on the screen: compositing managers show it later, or
    /// fade it out, and windows below it have to be painted again.
    static constexpr std::uint64_t kLingerNs = 500'000'000;

    /// @param connection must outlive this object
    explicit ExcludedAreas(const X11Connection& connection) : m_connection(connection) {}

    /// Whether there are such windows, shown or not, or were a moment ago.
    bool areThereAny() const;

    /// Asks the server where they are. What is on the screen in between was seen by one of two looks. What was there at
    /// the last look of an earlier frame was there until now.
    /// @param nowNs the same for the looks of one frame
    void look(std::uint64_t nowNs);

    /// Whether a look finds something else though nothing has changed on the screen.
    bool isLookDue() const;

    /// Where they were at the looks of this frame, as far as their shapes go.
    QRegion present() const;
    /// Where else they have been a moment ago.
    QRegion recent() const;

    /// Whether all of a top-level window is excluded. One of the program's own may be in another, which a window
    /// manager has made.
    bool isExcluded(xcb_window_t topLevel) const;
    /// What is excluded of a top-level window that is not excluded as a whole.
    QRegion excludedPartOf(xcb_window_t topLevel) const;

private:
    /// A window that is on the screen.
    struct Shown
    {
        xcb_window_t topLevel = XCB_WINDOW_NONE;
        int borderPx = 0;
    };

    struct Area
    {
        Shown window;
        QRegion region;
        std::uint64_t seenNs = 0;
    };

    void beginFrame(std::uint64_t nowNs);
    bool isPresent(const Area& area) const { return area.seenNs == m_lookNs; }
    std::vector<Shown> shownWindows();
    xcb_window_t topLevelOf(xcb_window_t window, xcb_window_t parent) const;
    void note(const Shown& window, const QRegion& region, std::uint64_t nowNs);

    const X11Connection& m_connection;
    std::vector<Area> m_areas;
    /// Those that the last look has asked for.
    std::vector<platform::ExcludedWindow> m_windows;
    /// Of the last look.
    std::uint64_t m_lookNs = 0;
};
