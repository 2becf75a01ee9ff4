// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <cstdint>
#include <memory>

/// A minimised window that no window manager looks after, and what programs do with it from then on. Since nobody
/// answers, everything that a program asks for is seen, in the order in which it asks.
///
/// Needs an X display; talks to it over a connection of its own.
class WatchedWindow
{
public:
    WatchedWindow();
    ~WatchedWindow();
    WatchedWindow(const WatchedWindow&) = delete;
    WatchedWindow& operator=(const WatchedWindow&) = delete;

    uint32_t id() const;

    /// What was done to the window, and asked of the window manager about it, up to now: "shown", or the request's name
    /// and what it is about ("_NET_WM_STATE add _NET_WM_STATE_ABOVE").
    QStringList events();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
