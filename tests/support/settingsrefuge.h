// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Keeps the settings that lie in no file away from a test, and the test from them: for the object's life the process
/// sees an empty store in their place, which goes with the object.
///
/// On Windows that is the registry key HKEY_CURRENT_USER. Processes that the test starts see the user's own. Elsewhere
/// settings are files of the profile, and there is nothing to do.
class SettingsRefuge
{
public:
    SettingsRefuge();
    ~SettingsRefuge();
    SettingsRefuge(const SettingsRefuge&) = delete;
    SettingsRefuge& operator=(const SettingsRefuge&) = delete;

private:
    QString m_keyPath;
};
