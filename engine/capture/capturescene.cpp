// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/capturescene.h"

#include "engine/capture/capturesource.h"
#include "engine/core/waituntil.h"

#include <QByteArray>
#include <QSize>

#include <graphics/vec2.h>

namespace {

constexpr char kSceneName[] = "CurrentDesktopCapture";
constexpr char kTransitionId[] = "fade_transition";

/// libobs counts a frame that it is late with as often as it hands it out.
std::int64_t renderedFrames()
{
    const std::int64_t handedOut = obs_get_total_frames();
    return handedOut - obs_get_lagged_frames();
}

} // namespace

int CaptureScene::setUp(bool window)
{
    if (!obs_initialized())
        return -1;
    OutputChannels::clear();
    if (!createTransition())
        return -1;
    if (!createScene())
        return -2;
    if (m_capture.isOpen())
        obs_set_output_source(kVideoChannel, m_transition.get());
    obs_transition_set(m_transition.get(), obs_scene_get_source(m_scene.get()));
    return m_capture.create(window, m_scene.get()) ? 0 : -3;
}

bool CaptureScene::createTransition()
{
    m_transition.reset();
    const char* id = nullptr;
    for (size_t i = 0; obs_enum_transition_types(i, &id); ++i) {
        if (obs_is_source_configurable(id))
            continue;
        ObsSourceHandle transition(obs_source_create_private(id, obs_source_get_display_name(id), nullptr));
        if (transition && qstrcmp(id, kTransitionId) == 0)
            m_transition = std::move(transition);
    }
    m_channels.noteMade(kVideoChannel, m_transition.get());
    return m_transition != nullptr;
}

bool CaptureScene::createScene()
{
    m_scene.reset();
    m_scene.reset(obs_scene_create(kSceneName));
    return m_scene != nullptr;
}

void CaptureScene::setRendered(bool rendered)
{
    m_capture.setOpen(rendered);
    if (!m_transition || rendered == isRendered())
        return;
    obs_set_output_source(kVideoChannel, rendered ? m_transition.get() : nullptr);
    if (rendered)
        waitUntilDrawn();
}

bool CaptureScene::isRendered() const
{
    if (!m_transition)
        return false;
    const ObsSourceHandle shown(obs_get_output_source(kVideoChannel));
    return shown == m_transition;
}

void CaptureScene::waitUntilDrawn() const
{
    const QDeadlineTimer deadline(m_timings.sceneDrawnLimit);
    waitUntil([this] { return !m_capture.get() || obs_source_get_width(m_capture.get()) != 0; }, deadline);
    const std::int64_t before = renderedFrames();
    waitUntil([&] { return renderedFrames() - before >= m_platform.framesUntilDrawn; }, deadline);
}

void CaptureScene::stretchOver(const QSize& output)
{
    if (!m_scene || !m_capture.get())
        return;
    obs_sceneitem_t* item = obs_scene_find_source(m_scene.get(), obs_source_get_name(m_capture.get()));
    if (!item)
        return;
    vec2 position{};
    vec2 bounds{};
    vec2_set(&bounds, static_cast<float>(output.width()), static_cast<float>(output.height()));
    obs_sceneitem_set_pos(item, &position);
    obs_sceneitem_set_alignment(item, OBS_ALIGN_LEFT | OBS_ALIGN_TOP);
    obs_sceneitem_set_bounds_type(item, OBS_BOUNDS_STRETCH);
    obs_sceneitem_set_bounds(item, &bounds);
}
