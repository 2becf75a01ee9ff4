// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/pulseserver.h"
#include "engine/capture/captureplatform.h"
#include "engine/capture/screenvideo.h"
#include "engine/capture/x11/x11frames.h"

#include <obs-nix-platform.h>
#include <obs.h>

#include <cstdlib>

CapturePlatform CapturePlatform::current()
{
    CapturePlatform platform = x11();
    platform.openFrames = [](const QRect& area, QString& obstacle) { return X11Frames::open(area, obstacle); };
    platform.openAudioServer = []() -> std::unique_ptr<AudioServer> { return std::make_unique<PulseServer>(); };
    return platform;
}

void prepareLibobsStart()
{
    // No platform display: libobs then opens a connection of its own. On a shared one it would take Qt's
    // events.
    obs_set_nix_platform(OBS_NIX_PLATFORM_X11_EGL);
}

void prepareProcessEnd()
{
    // Handlers run in the reverse order: this one before those of the drawing libraries, which were loaded by now. The
    // graphics context is entered and never left, so the graphics thread waits for it until the process is gone.
    std::atexit([] {
        ScreenVideo::stopForGood();
        obs_enter_graphics();
    });
}
