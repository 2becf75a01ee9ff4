#include "engine/rowpacking.h"

#include "platform/process/gl_function.h"

#include <obs.h>

namespace {

using PixelStore = void (*)(unsigned int name, int value);

/// GL_PACK_ALIGNMENT
constexpr unsigned int kPackAlignment = 0x0D05;

/// What libobs takes the length of a row of two bytes for.
bool countsPadding()
{
    constexpr uint32_t kWidth = 2;
    gs_stagesurf_t* const surface = gs_stagesurface_create(kWidth, 1, GS_R8);
    uint8_t* data = nullptr;
    uint32_t rowBytes = 0;
    const bool mapped = surface != nullptr && gs_stagesurface_map(surface, &data, &rowBytes);
    if (mapped)
        gs_stagesurface_unmap(surface);
    gs_stagesurface_destroy(surface);
    return !mapped || rowBytes != kWidth;
}

} // namespace

void packPictureRows()
{
    obs_enter_graphics();
    if (gs_get_context() != nullptr && gs_get_device_type() == GS_DEVICE_OPENGL && !countsPadding()) {
        if (const auto pixelStore = reinterpret_cast<PixelStore>(platform::glFunction("glPixelStorei")))
            pixelStore(kPackAlignment, 1);
    }
    obs_leave_graphics();
}
