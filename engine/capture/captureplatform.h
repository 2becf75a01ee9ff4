// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/propertylist.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class AudioServer;
class FrameSource;
class QRect;
class QString;

/// How the plug-ins of libobs are brought in.
enum class ModuleLoading
{
    All,           ///< Everything that libobs finds in its module paths.
    OwnFolderOnly, ///< Only what lies in the program's own folder: the library's default paths hold other programs'
                   ///< plug-ins.
};

/// One kind of video capture: what it is called and how its targets are listed and chosen.
struct CaptureSourceKind
{
    const char* sourceId = nullptr;
    const char* sourceName = nullptr;
    PropertyList targets;
    /// Tried where the source has no property `targets`; its key is null when there is no second choice.
    PropertyList secondChoice;
    /// Whether the setting takes the entry's name instead of its value.
    bool selectedByName = false;
    /// Integer setting that chooses the capture method, with its value; null when there is none.
    const char* methodKey = nullptr;
    int method = 0;
    /// The target with which the source captures nothing, opens no display and shares no memory, where there is one.
    std::optional<int> noTarget = std::nullopt;
};

/// A type that has to be registered after the modules were loaded.
struct NeededType
{
    enum class Registry
    {
        Source,
        Output,
        Encoder
    };

    Registry registry = Registry::Source;
    const char* id = nullptr;
    /// What will not work without it, in words for the log.
    const char* consequence = nullptr;
};

/// What capturing differs in from system to system. A value: the rules of each system are tested on every one.
/// All texts are string literals.
struct CapturePlatform
{
    const char* graphicsModule = nullptr;
    ModuleLoading moduleLoading = ModuleLoading::All;
    CaptureSourceKind monitor;
    CaptureSourceKind window;
    /// Boolean setting of both capture kinds that draws the pointer.
    const char* cursorKey = nullptr;
    /// How many frames the engine has to render from the moment the scene is put on until one shows the screen as it
    /// is: the one it is at, one that was begun afterwards, and more where the system is late with the first one.
    int framesUntilDrawn = 2;
    const char* desktopAudioId = nullptr;
    /// So much earlier than the screen is the audio that the plug-in delivers.
    std::int64_t desktopAudioDelayNs = 0;
    const char* microphoneId = nullptr;
    /// Null where an audio source goes silent with a device that vanishes, and takes it up again by itself. The others
    /// are moved by the sound server to whatever it takes for the next best, and are lost with the server.
    std::unique_ptr<AudioServer> (*openAudioServer)() = nullptr;
    /// Modules without which the program cannot do its job. One that did not load counts as failed.
    std::vector<const char*> neededModules;
    std::vector<NeededType> neededTypes;
    /// Makes the frames of an area of the desktop, of an even size in physical pixels, without the engine's scene;
    /// null, with the obstacle in words, where that does not work. Null on systems where only the scene captures.
    std::unique_ptr<FrameSource> (*openFrames)(const QRect& area, QString& obstacle) = nullptr;

    static CapturePlatform windows();
    static CapturePlatform x11();
    /// The table of the system that the program was built for.
    static CapturePlatform current();
};

/// Gives libobs what it must know before it is started: on X11 the kind of display connection, on Windows nothing.
void prepareLibobsStart();

/// Lets exit() end the process well while the engine runs, which Qt calls when the display is lost. Call once, after
/// the engine's video was set up.
///
/// On X11 the drawing libraries take their display down in exit handlers while the engine's graphics thread goes on
/// drawing, so it is blocked before, with the threads of ScreenVideo. On Windows the system ends the other threads
/// first.
void prepareProcessEnd();
