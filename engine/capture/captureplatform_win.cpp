#include "engine/capture/captureplatform.h"

CapturePlatform CapturePlatform::current()
{
    return windows();
}

void prepareLibobsStart() {}

void prepareProcessEnd() {}
