// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

class QWidget;

namespace platform {

/// Ctrl+Shift+H for one window, wherever the keyboard focus is. When another program holds the key only the log says
/// so. User-interface thread.
class WindowHotkey
{
public:
    /// The window gets its native handle and outlives the object. pressed is called where isMessage() does not report
    /// the key.
    WindowHotkey(QWidget& window, std::function<void()> pressed);
    ~WindowHotkey();
    WindowHotkey(const WindowHotkey&) = delete;
    WindowHotkey& operator=(const WindowHotkey&) = delete;

    /// Whether what came to QWidget::nativeEvent() is a hotkey: on Windows.
    static bool isMessage(const QByteArray& eventType, const void* message);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
