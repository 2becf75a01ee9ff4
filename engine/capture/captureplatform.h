#pragma once

#include "engine/core/propertylist.h"

#include <vector>

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

/// Everything in which capturing differs from system to system: a table as a value, so that the rules of each system
/// can be looked at on every system. All texts are string literals.
struct CapturePlatform
{
    const char* graphicsModule = nullptr;
    ModuleLoading moduleLoading = ModuleLoading::All;
    CaptureSourceKind monitor;
    CaptureSourceKind window;
    /// Boolean setting of both capture kinds that draws the pointer.
    const char* cursorKey = nullptr;
    /// How many pictures the engine has to render from the moment the scene is put on until one shows the screen as it
    /// is: the one it is at, one that was begun afterwards, and more where the system sends the first one in its own
    /// time.
    int picturesUntilDrawn = 2;
    const char* desktopAudioId = nullptr;
    const char* microphoneId = nullptr;
    /// Whether the sound plug-ins keep to their devices: they go silent with a device that vanishes, and take it up
    /// again when it comes back. Those that do not are moved by the sound server to whatever it takes for the next
    /// best.
    bool soundKeepsToItsDevices = true;
    /// Modules without which the program cannot do its job. One that did not load counts as failed.
    std::vector<const char*> neededModules;
    std::vector<NeededType> neededTypes;

    static CapturePlatform windows();
    static CapturePlatform x11();
    /// The table of the system that the program was built for.
    static CapturePlatform current();
};

/// Tells libobs what it must know before it is started: on X11 the kind of display connection, on Windows nothing.
void prepareLibobsStart();

/// Sees to it that a process that somebody ends by exit() while the engine runs ends well: the toolkit does so when the
/// display is lost. The program's own end runs no exit handlers. Call once, after the engine's video was set up.
///
/// On X11 the drawing libraries take their display down in exit handlers while the engine's picture thread goes on
/// drawing; it is held from then on. On Windows the system ends the other threads first.
void prepareProcessEnd();
