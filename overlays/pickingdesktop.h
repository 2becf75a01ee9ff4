// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/input/mouse_hook.h"
#include "platform/input/native_windows.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

/// What the window highlighter needs of the desktop. Tests replace it.
class PickingDesktop
{
public:
    virtual ~PickingDesktop() = default;

    /// Every window can be picked.
    static std::unique_ptr<PickingDesktop> ofTheSystem();

    /// This program's windows cannot be picked.
    static std::unique_ptr<PickingDesktop> ofOtherPrograms();

    /// 0, or the system's error number.
    virtual unsigned long installMouseHook(platform::MouseHook::Handler handler) = 0;
    virtual void removeMouseHook() = 0;
    /// The mouse, and the cancel key.
    virtual void setInputWanted(bool wanted) = 0;

    /// Escape, whatever has the keyboard.
    virtual void registerCancelKey(std::function<void()> pressed) = 0;

    virtual void registerHotkey(QWidget& window, std::function<void()> pressed) = 0;
    virtual void unregisterHotkey() = 0;

    virtual platform::NativeWindow windowAt(const QPoint& position) const = 0;
    /// The program windows that can be picked without a mouse, the topmost first.
    virtual std::vector<platform::NativeWindow> windows() const = 0;
    /// As a click does.
    virtual void activate(platform::NativeWindow window) = 0;
    virtual bool isPickable(platform::NativeWindow window) const = 0;
    virtual bool exists(platform::NativeWindow window) const = 0;
    virtual std::optional<QRect> rectOf(platform::NativeWindow window) const = 0;

    /// Left or right. On X11 a menu that opens meanwhile cannot grab the mouse.
    virtual bool isMouseButtonDown() const = 0;
};
