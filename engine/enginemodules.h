#pragma once

#include <QString>
#include <QStringList>

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

/// Loads the plug-in modules the way the platform asks for. Needs a started engine with its module paths set.
///
/// @return the names of the modules that failed, each once; those the platform needs and that are not there are among
///         them.
QStringList loadEngineModules(const CapturePlatform& platform, const EngineFolders& folders);

/// For each type that the platform needs and that no module registered: its id with what will not work, as a sentence.
QStringList missingEngineTypes(const CapturePlatform& platform);
