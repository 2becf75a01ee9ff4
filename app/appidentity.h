// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace appidentity {

inline constexpr char kApplicationName[] = "Kestrano";
inline constexpr char kOrganizationName[] = "Tolvaran";
inline constexpr char kVersion[] = "1.0.0";

/// Call before anything derives a path from it.
void apply();

/// Needs apply(); not created here.
QString dataFolder();

/// dataFolder() + "/logs"; not created here.
QString logFolder();

} // namespace appidentity
