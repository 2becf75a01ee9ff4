#pragma once

#include <functional>
#include <memory>

class QRegion;
class QWidget;

namespace platform {

/// Keeps what a translucent window does not paint truly open: what lies below is seen there, and the pointer reaches
/// it, or the window itself where it wants the pointer all the same.
///
/// On Windows both follow from what the window paints: pixels of alpha 0 are open, all others take the pointer, and
/// nothing is done. An X11 window takes the pointer wherever its shape is, whatever its alpha, and without a compositor
/// its unpainted pixels are black. There the window is cut to what it paints; where it wants the pointer and no
/// compositor lets it have its whole shape, an input-only window in front of it catches the pointer's buttons and moves
/// and hands them to it as mouse events. While that is so, the left and the right button and a plain move arrive; the
/// wheel is swallowed, and the cursor is a cross.
///
/// For windows made ready by prepareAsOverlay(). Used on the user-interface thread, by the window that owns it.
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

    /// Fits the opening to what the window paints and wants now. Call it whenever the window is shown or hidden,
    /// resized, or one of these changes.
    ///
    /// @param isCompositing whether the system mixes the window with what lies below it: platform::isCompositing().
    /// @param painted gives what the window paints, in its own logical pixels; asked only where the window is cut to
    /// it.
    void update(Pointer pointer, bool isCompositing, const std::function<QRegion()>& painted);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
