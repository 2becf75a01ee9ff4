// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/global_hotkey.h"

#include "platform/input/global_hotkey_backend.h"

namespace platform {

GlobalHotkey::GlobalHotkey(QObject* parent, WhenHeld whenHeld)
    : QObject(parent), m_whenHeld(whenHeld), m_backend(Backend::create(*this))
{}

GlobalHotkey::~GlobalHotkey() = default;

bool GlobalHotkey::registerKey(const QKeySequence& sequence)
{
    m_backend->release();
    m_failureReason.clear();
    if (sequence.isEmpty())
        return true;
    const QKeyCombination key = sequence[0];
    // Of a text that names no key.
    m_failureReason = key.key() == Qt::Key_unknown ? QStringLiteral("there is no such key") : m_backend->take(key);
    return m_failureReason.isEmpty();
}

} // namespace platform
