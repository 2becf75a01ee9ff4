// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey.h"
#include "platform/input/window_hotkey.h"

#include <QWidget>

#include <utility>

namespace platform {

struct WindowHotkey::Private
{
    GlobalHotkey hotkey{nullptr};
};

WindowHotkey::WindowHotkey(QWidget& window, std::function<void()> pressed) : m_private(std::make_unique<Private>())
{
    window.winId();
    QObject::connect(&m_private->hotkey, &GlobalHotkey::activated, &m_private->hotkey, std::move(pressed));
    m_private->hotkey.registerKey(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_H));
}

WindowHotkey::~WindowHotkey() = default;

bool WindowHotkey::isMessage(const QByteArray&, const void*)
{
    return false;
}

} // namespace platform
