// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/settingsrefuge.h"

SettingsRefuge::SettingsRefuge() = default;

SettingsRefuge::~SettingsRefuge() = default;
