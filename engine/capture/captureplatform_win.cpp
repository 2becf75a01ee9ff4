// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/captureplatform.h"

CapturePlatform CapturePlatform::current()
{
    return windows();
}

void prepareLibobsStart() {}

void prepareProcessEnd() {}
