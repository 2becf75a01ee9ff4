// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/captureplatform.h"

#include "engine/capture/openglmodule.h"

namespace {

/// A monitor of PulseAudio delivers what is heard some milliseconds later; measured with tools/bench-long.
constexpr std::int64_t kMonitorLeadNs = 8'000'000;
/// A change of the screen is in the first frame after it: at 30 frames a second between 0 and 33 ms late.
constexpr std::int64_t kFrameLagNs = 16'000'000;

std::vector<NeededType> typesNeededWith(const char* monitorId, const char* windowId, const char* desktopAudioId,
                                        const char* microphoneId)
{
    using Registry = NeededType::Registry;
    return {
        {Registry::Source, "fade_transition", "nothing can be shown or recorded"},
        {Registry::Source, monitorId, "the screen cannot be recorded"},
        {Registry::Source, windowId, "single windows cannot be recorded"},
        {Registry::Source, "crop_filter", "a region cannot be recorded, only the whole screen"},
        {Registry::Source, desktopAudioId, "the computer's audio cannot be recorded"},
        {Registry::Source, microphoneId, "the microphone cannot be recorded"},
        {Registry::Output, "ffmpeg_output", "nothing can be written to a file"},
        {Registry::Encoder, "ffmpeg_aac", "no recording can be prepared"},
    };
}

} // namespace

CapturePlatform CapturePlatform::windows()
{
    CapturePlatform platform;
    platform.graphicsModule = "libobs-d3d11.dll";
    platform.moduleLoading = ModuleLoading::All;
    // Where only the older monitor capture is there, it lists the monitors' numbers.
    platform.monitor = {.sourceId = "monitor_capture",
                        .sourceName = "Computer_Monitor_Capture",
                        .targets = {"monitor_id", ListKind::Text},
                        .secondChoice = {"monitor", ListKind::Integer},
                        .selectedByName = false,
                        .methodKey = "method",
                        .method = 1};
    platform.window = {.sourceId = "window_capture",
                       .sourceName = "Window_Capture",
                       .targets = {"window", ListKind::Text},
                       .secondChoice = {},
                       .selectedByName = true};
    platform.cursorKey = "capture_cursor";
    platform.framesUntilDrawn = 6;
    platform.desktopAudioId = "wasapi_output_capture";
    platform.microphoneId = "wasapi_input_capture";
    platform.neededModules = {"obs-ffmpeg", "obs-filters", "obs-transitions", "win-capture", "win-wasapi"};
    platform.neededTypes = typesNeededWith(platform.monitor.sourceId, platform.window.sourceId, platform.desktopAudioId,
                                           platform.microphoneId);
    return platform;
}

CapturePlatform CapturePlatform::x11()
{
    CapturePlatform platform;
    platform.graphicsModule = kOpenGlModule;
    // The default paths may hold front-end plug-ins that end the process when no studio window is there.
    platform.moduleLoading = ModuleLoading::OwnFolderOnly;
    platform.monitor = {.sourceId = "xshm_input",
                        .sourceName = "Computer_Monitor_Capture",
                        .targets = {"screen", ListKind::Integer},
                        .secondChoice = {},
                        .noTarget = -1};
    platform.window = {.sourceId = "xcomposite_input",
                       .sourceName = "Window_Capture",
                       .targets = {"capture_window", ListKind::Text},
                       .secondChoice = {}};
    platform.cursorKey = "show_cursor";
    platform.desktopAudioId = "pulse_output_capture";
    platform.desktopAudioDelayNs = kMonitorLeadNs + kFrameLagNs;
    platform.microphoneId = "pulse_input_capture";
    platform.neededModules = {"obs-ffmpeg", "obs-filters", "obs-transitions", "linux-capture", "linux-pulseaudio"};
    platform.neededTypes = typesNeededWith(platform.monitor.sourceId, platform.window.sourceId, platform.desktopAudioId,
                                           platform.microphoneId);
    return platform;
}
