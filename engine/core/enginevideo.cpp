// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginevideo.h"

#include "engine/core/enginecore.h"

#include <obs.h>

namespace {

/// libobs rounds down to multiples of them.
constexpr QSize kLeast(4, 2);

bool holdsLeast(const QSize& size)
{
    return size.width() >= kLeast.width() && size.height() >= kLeast.height();
}

EngineVideo::Settings presentSettings()
{
    obs_video_info video{};
    if (!obs_get_video_info(&video))
        return {};
    return {QSize(static_cast<int>(video.base_width), static_cast<int>(video.base_height)),
            QSize(static_cast<int>(video.output_width), static_cast<int>(video.output_height)),
            static_cast<int>(video.fps_num)};
}

} // namespace

int EngineVideo::reset(const Settings& asked, bool reduced)
{
    // What libobs refuses is refused all the same.
    const bool isSmall = reduced && holdsLeast(asked.source) && holdsLeast(asked.output);
    const Settings made = isSmall ? Settings{kLeast, kLeast, asked.fps} : asked;
    const int result = enginecore::resetVideo(m_platform, made.source, made.output, made.fps);
    if (result == OBS_VIDEO_SUCCESS) {
        m_asked = asked;
        m_isReduced = reduced;
    }
    return result;
}

int EngineVideo::setReduced(bool reduced)
{
    return reset(m_asked.source.isEmpty() ? presentSettings() : m_asked, reduced);
}
