// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginevideo.h"

#include "engine/core/enginecore.h"

#include <QOpenGLContext>

#include <obs.h>

#include <algorithm>

namespace {

/// libobs rounds down to multiples of them.
constexpr QSize kLeast(4, 2);
/// A reset waits for a frame.
constexpr int kIdleFps = 10;

/// Qt leaves the one that it has painted a video with current on this thread, and libobs' own cannot become current
/// beside it.
void releaseQtContext()
{
    if (QOpenGLContext* const context = QOpenGLContext::currentContext())
        context->doneCurrent();
}

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

EngineVideo::Settings madeFrom(const EngineVideo::Settings& asked, EngineVideo::Need need)
{
    using Need = EngineVideo::Need;
    if (need == Need::Frames || !holdsLeast(asked.source) || !holdsLeast(asked.output))
        return asked;
    return {kLeast, kLeast, need == Need::Nothing ? std::min(asked.fps, kIdleFps) : asked.fps};
}

} // namespace

int EngineVideo::reset(const Settings& asked, Need need)
{
    releaseQtContext();
    // libobs would lose its video over them.
    if (!enginecore::mayHold(asked.source) || !enginecore::mayHold(asked.output))
        return OBS_VIDEO_FAIL;
    const Settings made = madeFrom(asked, need);
    const int result = enginecore::resetVideo(m_platform, made.source, made.output, made.fps);
    if (result == OBS_VIDEO_SUCCESS) {
        m_asked = asked;
        m_need = need;
    }
    return result;
}

int EngineVideo::setNeed(Need need)
{
    return reset(m_asked.source.isEmpty() ? presentSettings() : m_asked, need);
}
