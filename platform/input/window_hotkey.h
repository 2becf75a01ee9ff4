// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

class QWidget;

namespace platform {

/// Ctrl+Shift+H for one window, wherever the keyboard focus is. A key that cannot be taken is logged. User-interface
/// thread.
class WindowHotkey
{
public:
    /// The window gets its native handle and outlives the object. pressed is not called where isMessage() reports the
    /// key.
    WindowHotkey(QWidget& window, std::function<void()> pressed);
    ~WindowHotkey();

    /// Whether a message of QWidget::nativeEvent() is a hotkey: on Windows.
    static bool isMessage(const QByteArray& eventType, const void* message);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
