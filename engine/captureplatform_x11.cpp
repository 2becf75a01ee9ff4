#include "engine/captureplatform.h"

#include <obs-nix-platform.h>

CapturePlatform CapturePlatform::current()
{
    return x11();
}

void prepareLibobsStart()
{
    // No platform display: libobs then opens a connection of its own. On a shared one it would take the toolkit's
    // events.
    obs_set_nix_platform(OBS_NIX_PLATFORM_X11_EGL);
}
