// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

class QRegion;
class QWidget;

namespace platform {

/// Keeps what a translucent window does not paint open: what lies below is seen there, and the pointer reaches it, or
/// the window itself where it wants the pointer all the same.
///
/// On Windows both follow from what the window paints, and nothing is done. On X11 the window is cut to what it paints
/// (docs/x11-limits.md); where it wants the pointer and there is no compositor, an input-only window in front of it
/// hands it buttons and moves as mouse events. The wheel is swallowed then, and the cursor is a cross.
///
/// For windows prepared by prepareAsOverlay(). User-interface thread.
class WindowOpening
{
public:
    enum class Pointer
    {
        PassesThrough,
        IsTaken
    };

    explicit WindowOpening(QWidget& window);
    ~WindowOpening();
    WindowOpening(const WindowOpening&) = delete;
    WindowOpening& operator=(const WindowOpening&) = delete;

    /// Call it whenever the window is shown, hidden or resized, or one of these changes.
    ///
    /// @param isCompositing platform::isCompositing().
    /// @param painted gives what the window paints, in its own logical pixels; asked only where the window is cut to
    /// it.
    void update(Pointer pointer, bool isCompositing, const std::function<QRegion()>& painted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
