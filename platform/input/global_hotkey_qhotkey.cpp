// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey_backend.h"

#include <QHotkey>

namespace platform {

namespace {

class QHotkeyBackend : public GlobalHotkey::Backend
{
public:
    explicit QHotkeyBackend(GlobalHotkey& owner)
    {
        QObject::connect(&m_hotkey, &QHotkey::activated, &owner, &GlobalHotkey::activated, Qt::QueuedConnection);
    }

    QString take(const QKeyCombination& key) override
    {
        m_hotkey.setShortcut(QKeySequence(key), true);
        // Asked, for setShortcut() also reports success when there was nothing to register.
        return m_hotkey.isRegistered() ? QString()
                                       : QStringLiteral("another program holds it, or the keyboard does not have it");
    }

    void release() override { m_hotkey.resetShortcut(); }

private:
    QHotkey m_hotkey;
};

} // namespace

std::unique_ptr<GlobalHotkey::Backend> GlobalHotkey::Backend::create(GlobalHotkey& owner)
{
    return std::make_unique<QHotkeyBackend>(owner);
}

} // namespace platform
