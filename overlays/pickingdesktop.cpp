// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/pickingdesktop.h"

#include "platform/input/global_hotkey.h"
#include "platform/input/pointer_state.h"
#include "platform/input/window_hotkey.h"
#include "platform/windowing/window_activation.h"

#include <utility>

namespace {

class SystemDesktop : public PickingDesktop
{
public:
    unsigned long installMouseHook(platform::MouseHook::Handler handler) override
    {
        return m_hook.install(std::move(handler));
    }
    void removeMouseHook() override { m_hook.remove(); }
    void setInputWanted(bool wanted) override
    {
        m_hook.setWanted(wanted);
        m_cancelKey.registerKey(wanted ? QKeySequence(Qt::Key_Escape) : QKeySequence());
    }

    void registerCancelKey(std::function<void()> pressed) override
    {
        QObject::connect(&m_cancelKey, &platform::GlobalHotkey::activated, &m_cancelKey, std::move(pressed));
    }

    void registerHotkey(QWidget& window, std::function<void()> pressed) override
    {
        m_hotkey = std::make_unique<platform::WindowHotkey>(window, std::move(pressed));
    }
    void unregisterHotkey() override { m_hotkey.reset(); }

    platform::NativeWindow windowAt(const QPoint& position) const override { return m_windows.at(position); }
    std::vector<platform::NativeWindow> windows() const override { return m_windows.shown(); }
    void activate(platform::NativeWindow window) override { platform::activateWindow(window); }
    bool isPickable(platform::NativeWindow /*window*/) const override { return true; }
    bool exists(platform::NativeWindow window) const override { return m_windows.exists(window); }
    std::optional<QRect> rectOf(platform::NativeWindow window) const override { return m_windows.rectOf(window); }
    bool isMouseButtonDown() const override
    {
        const std::optional<platform::PointerState> pointer = m_pointer.look();
        return pointer && (pointer->leftDown || pointer->rightDown);
    }

protected:
    const platform::NativeWindows& native() const { return m_windows; }

private:
    platform::MouseHook m_hook;
    platform::NativeWindows m_windows;
    platform::PointerProbe m_pointer;
    std::unique_ptr<platform::WindowHotkey> m_hotkey;
    platform::GlobalHotkey m_cancelKey{nullptr, platform::GlobalHotkey::WhenHeld::Listen};
};

class OtherProgramsDesktop : public SystemDesktop
{
public:
    bool isPickable(platform::NativeWindow window) const override { return !native().isOwn(window); }
};

} // namespace

std::unique_ptr<PickingDesktop> PickingDesktop::ofTheSystem()
{
    return std::make_unique<SystemDesktop>();
}

std::unique_ptr<PickingDesktop> PickingDesktop::ofOtherPrograms()
{
    return std::make_unique<OtherProgramsDesktop>();
}
