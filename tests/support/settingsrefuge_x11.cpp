#include "tests/support/settingsrefuge.h"

SettingsRefuge::SettingsRefuge() = default;

SettingsRefuge::~SettingsRefuge() = default;
