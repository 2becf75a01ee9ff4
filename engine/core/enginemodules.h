// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct CapturePlatform;

/// Where the engine's files lie: a folder "obs-data" beside the executable. Paths are absolute and use "/".
struct EngineFolders
{
    /// The plug-ins themselves.
    QString plugins;
    /// The plug-ins' data, with libobs' placeholder "%module%" for the name of the module.
    QString pluginData;
    /// The data of the core library; ends with "/".
    QString coreData;

    static EngineFolders besideExecutable();
};

/// Loads the plug-in modules the way the platform asks for. Needs a started engine with its module paths set. The log
/// names the modules that failed or are not there though the platform needs them, and each type that is missing then
/// with what will not work.
void loadEngineModules(const CapturePlatform& platform);
