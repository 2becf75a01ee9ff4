// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/sole_qhotkey.h"

#include <QSet>

namespace platform {

namespace {

QSet<QHotkey::NativeShortcut>& takenKeys()
{
    static QSet<QHotkey::NativeShortcut> keys;
    return keys;
}

} // namespace

SoleQHotkey::~SoleQHotkey()
{
    release();
}

QString SoleQHotkey::take(const QKeyCombination& key)
{
    m_hotkey.setShortcut(QKeySequence(key), false);
    const QHotkey::NativeShortcut native = m_hotkey.currentNativeShortcut();
    if (!native.isValid())
        return QStringLiteral("the keyboard has no such key");
    if (takenKeys().contains(native) || !m_hotkey.setRegistered(true))
        return QStringLiteral("another program holds it");
    takenKeys().insert(native);
    return {};
}

void SoleQHotkey::release()
{
    if (m_hotkey.isRegistered())
        takenKeys().remove(m_hotkey.currentNativeShortcut());
    m_hotkey.resetShortcut();
}

} // namespace platform
