// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/settingsrefuge.h"

#include <QTemporaryDir>

/// A user profile of its own for one test program: home, XDG folders and the folder of temporary files (and with it the
/// single-instance segment) lie under a temporary directory that goes with the object, and on Windows the registry is
/// an empty one. Make it first thing in main(), before the application object.
class TestProfile
{
public:
    TestProfile();

    /// Absolute path of the profile's root folder.
    QString path() const;

private:
    QTemporaryDir m_root;
    SettingsRefuge m_settings;
};
