// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Who the program is: the names under which the system files its settings, logs and data.
namespace appidentity {

inline constexpr char kApplicationName[] = "Kestrano";
inline constexpr char kOrganizationName[] = "Tolvaran";
inline constexpr char kVersion[] = "1.0.0";

/// Gives the identity to the core application. Comes before everything that derives a path from it.
void apply();

/// The per-user writable application-data folder. Needs apply() first. Not created here.
QString dataFolder();

/// The folder of log files and crash reports: dataFolder() + "/logs". Not created here.
QString logFolder();

} // namespace appidentity
