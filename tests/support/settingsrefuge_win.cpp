// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/settingsrefuge.h"

#include <QtGlobal>

#include <windows.h>

namespace {

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace

SettingsRefuge::SettingsRefuge() : m_keyPath(QStringLiteral("Software\\KestranoTest%1").arg(GetCurrentProcessId()))
{
    // Not volatile, though it is to go: keys made in a volatile one would have to be volatile as well.
    HKEY key = nullptr;
    const LSTATUS made = RegCreateKeyExW(HKEY_CURRENT_USER, wide(m_keyPath), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (made != ERROR_SUCCESS || RegOverridePredefKey(HKEY_CURRENT_USER, key) != ERROR_SUCCESS)
        qFatal("The user's registry settings cannot be kept from the test");
    RegCloseKey(key);
}

SettingsRefuge::~SettingsRefuge()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, wide(m_keyPath));
}
