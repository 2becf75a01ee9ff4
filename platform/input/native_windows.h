// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace platform {

/// A window of any program (HWND, X11 window); 0 is none. It may be gone at any moment.
using NativeWindow = std::uintptr_t;

/// The windows of all programs. Positions are physical pixels of the desktop. User-interface thread.
class NativeWindows
{
public:
    NativeWindows();
    ~NativeWindows();

    /// The deepest visible window that takes the pointer there: a control within a dialog, at least the desktop's own
    /// window. 0 when the system does not answer.
    NativeWindow at(const QPoint& position) const;

    /// Those of all programs that the user can see, or that others cover, as windows of topLevelOf(), without panels
    /// and what else a desktop is made of. The topmost is the first one.
    std::vector<NativeWindow> shown() const;

    bool exists(NativeWindow window) const;

    /// Whether it is one of this program, or the window manager's frame around one.
    bool isOwn(NativeWindow window) const;

    /// With its border; none when the window is gone.
    std::optional<QRect> rectOf(NativeWindow window) const;

    /// The window that a program has made for the desktop, and that holds this one or is held by this one, a window
    /// manager's frame. 0 for the desktop itself.
    NativeWindow topLevelOf(NativeWindow window) const;

    /// Of a window of topLevelOf(). Empty when it has none, or is gone.
    QString titleOf(NativeWindow window) const;

    /// Neither hidden, minimised nor gone.
    bool isShown(NativeWindow window) const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
