// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

class QRegion;
class QWidget;

namespace platform {

/// Opens the unpainted parts of a translucent window to sight and pointer, or keeps the pointer for the window.
/// On Windows both follow from what the window paints. On X11 the window is cut to that (docs/x11-limits.md); where it
/// keeps the pointer without a compositor, an input-only window in front of it passes buttons and moves on as mouse
/// events, without the wheel and with a cross as cursor.
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

    /// Call when the window is shown, hidden or resized, or one of these changes.
    /// @param painted what the window paints, in its own logical pixels; asked only where the window is cut to it
    void update(Pointer pointer, bool isCompositing, const std::function<QRegion()>& painted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
