#pragma once

#include "platform/input/mouse_hook.h"
#include "platform/input/native_windows.h"

#include <functional>
#include <memory>
#include <optional>

class QWidget;

/// What the window highlighter needs of the desktop; see platform/mouse_hook.h, native_windows.h, pointer_state.h and
/// window_hotkey.h. A value of its own, so that tests can put windows where there are none.
class PickingDesktop
{
public:
    virtual ~PickingDesktop() = default;

    /// The desktop that the user has.
    static std::unique_ptr<PickingDesktop> ofTheSystem();

    /// 0 on success, else the system's error number.
    virtual unsigned long installMouseHook(platform::MouseHook::Handler handler) = 0;
    virtual void removeMouseHook() = 0;
    virtual void setMouseWanted(bool wanted) = 0;

    virtual void registerHotkey(QWidget& window, std::function<void()> pressed) = 0;
    virtual void unregisterHotkey() = 0;

    virtual platform::NativeWindow windowAt(const QPoint& position) const = 0;
    virtual bool exists(platform::NativeWindow window) const = 0;
    virtual std::optional<QRect> rectOf(platform::NativeWindow window) const = 0;

    /// Whether the left or the right mouse button is held down. Until it is let go the window below has the mouse, and
    /// on X11 a menu that opens then cannot take it.
    virtual bool isMouseButtonDown() const = 0;
};
