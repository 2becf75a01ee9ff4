// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/pointereffects.h"

#include "engine/capture/pointercircles.h"
#include "engine/core/obshandles.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <numbers>
#include <vector>

namespace {

constexpr char kFilterId[] = "kestrano_pointer_effects";
constexpr char kFilterName[] = "Pointer effects";
constexpr char kHasOrigin[] = "has_origin";
constexpr char kOriginX[] = "origin_x";
constexpr char kOriginY[] = "origin_y";
constexpr char kPixelRatio[] = "pixel_ratio";

/// Corners of what passes for a circle. libobs takes 512 points at a time, and a corner needs nine.
constexpr int kCorners = 48;

struct Monitor
{
    std::optional<QPoint> originPx;
    float pixelRatio = 1.0F;
};

/// As libobs packs the colour of a point: red in the lowest byte.
std::uint32_t packed(const std::array<std::uint8_t, 4>& rgba)
{
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < rgba.size(); ++i)
        result |= std::uint32_t{rgba.at(i)} << (8 * i);
    return result;
}

class CircleMesh
{
public:
    explicit CircleMesh(const PointerCircle& circle)
        : m_x(static_cast<float>(circle.centrePx.x()))
        , m_y(static_cast<float>(circle.centrePx.y()))
        , m_inner(circle.innerPx())
        , m_outer(circle.outerPx())
        , m_color(packed(circle.rgba))
        , m_faded(packed({circle.rgba[0], circle.rgba[1], circle.rgba[2], 0}))
    {}

    /// Inside a pass of an effect that takes the points' colours.
    void draw() const
    {
        gs_render_start(false);
        for (int corner = 0; corner < kCorners; ++corner) {
            const float from = angleOf(corner);
            const float to = angleOf(corner + 1);
            addPoint(from, 0.0F, m_color);
            addPoint(from, m_inner, m_color);
            addPoint(to, m_inner, m_color);
            addPoint(from, m_inner, m_color);
            addPoint(from, m_outer, m_faded);
            addPoint(to, m_outer, m_faded);
            addPoint(from, m_inner, m_color);
            addPoint(to, m_outer, m_faded);
            addPoint(to, m_inner, m_color);
        }
        gs_render_stop(GS_TRIS);
    }

private:
    static float angleOf(int corner)
    {
        return 2.0F * std::numbers::pi_v<float> * static_cast<float>(corner) / kCorners;
    }

    void addPoint(float angle, float distance, std::uint32_t color) const
    {
        gs_color(color);
        gs_vertex2f(m_x + distance * std::cos(angle), m_y + distance * std::sin(angle));
    }

    float m_x;
    float m_y;
    float m_inner;
    float m_outer;
    std::uint32_t m_color;
    std::uint32_t m_faded;
};

/// The filter's own data. libobs calls tick() and draw() on its graphics thread.
class Effects
{
public:
    explicit Effects(obs_source_t* filter) : m_filter(filter) {}

    void follow(obs_source_t* capture);
    void readMonitor(obs_data_t* settings);
    void look();
    void draw() const;

private:
    static void onCaptureUpdated(void* effects, calldata_t* data);
    void readChoice(obs_source_t* capture);
    void drawCircles() const;
    std::vector<PointerCircle> circles() const;

    obs_source_t* m_filter;
    platform::PointerProbe m_probe;
    /// Guards what the settings say; they are read when they change, on whatever thread that happens.
    mutable std::mutex m_mutex;
    PointerEffectChoice m_choice;
    Monitor m_monitor;
    std::optional<platform::PointerState> m_pointer;
    ObsSignalConnection m_updates;
};

void Effects::follow(obs_source_t* capture)
{
    readChoice(capture);
    m_updates = connectSignal(obs_source_get_signal_handler(capture), "update", &Effects::onCaptureUpdated, this);
}

void Effects::onCaptureUpdated(void* effects, calldata_t* data)
{
    static_cast<Effects*>(effects)->readChoice(static_cast<obs_source_t*>(calldata_ptr(data, "source")));
}

void Effects::readChoice(obs_source_t* capture)
{
    const ObsDataHandle settings(obs_source_get_settings(capture));
    const PointerEffectChoice choice = PointerEffectChoice::from(settings.get());
    {
        const std::lock_guard lock(m_mutex);
        m_choice = choice;
    }
    if (obs_source_enabled(m_filter) == choice.isEmpty())
        obs_source_set_enabled(m_filter, !choice.isEmpty());
}

void Effects::readMonitor(obs_data_t* settings)
{
    const std::lock_guard lock(m_mutex);
    m_monitor.originPx.reset();
    if (obs_data_get_bool(settings, kHasOrigin))
        m_monitor.originPx = QPoint(static_cast<int>(obs_data_get_int(settings, kOriginX)),
                                    static_cast<int>(obs_data_get_int(settings, kOriginY)));
    m_monitor.pixelRatio = static_cast<float>(obs_data_get_double(settings, kPixelRatio));
}

void Effects::look()
{
    const bool isSeen = obs_source_enabled(m_filter) && obs_source_showing(obs_filter_get_parent(m_filter));
    m_pointer = isSeen ? m_probe.look() : std::nullopt;
}

void Effects::draw() const
{
    obs_source_skip_video_filter(m_filter);
    const std::lock_guard lock(m_mutex);
    if (m_pointer && m_monitor.originPx)
        drawCircles();
}

void Effects::drawCircles() const
{
    // The colours are mixed as they are stored, whatever the frame below is drawn in.
    const bool srgb = gs_framebuffer_srgb_enabled();
    gs_enable_framebuffer_srgb(false);
    gs_blend_state_push();
    gs_enable_blending(true);
    gs_blend_function_separate(GS_BLEND_SRCALPHA, GS_BLEND_INVSRCALPHA, GS_BLEND_ONE, GS_BLEND_INVSRCALPHA);
    gs_effect_t* const effect = obs_get_base_effect(OBS_EFFECT_SOLID);
    vec4 unchanged{};
    vec4_set(&unchanged, 1.0F, 1.0F, 1.0F, 1.0F);
    gs_effect_set_vec4(gs_effect_get_param_by_name(effect, "color"), &unchanged);
    while (gs_effect_loop(effect, "SolidColored")) {
        for (const PointerCircle& circle : circles())
            CircleMesh(circle).draw();
    }
    gs_blend_state_pop();
    gs_enable_framebuffer_srgb(srgb);
}

std::vector<PointerCircle> Effects::circles() const
{
    platform::PointerState inFrame = *m_pointer;
    inFrame.positionPx -= *m_monitor.originPx;
    return m_choice.circlesAround(inFrame, m_monitor.pixelRatio);
}

Effects& effectsOf(void* data)
{
    return *static_cast<Effects*>(data);
}

void registerType()
{
    obs_source_info info{};
    info.id = kFilterId;
    info.type = OBS_SOURCE_TYPE_FILTER;
    // Aware of sRGB: the frame below is drawn just as it is without the filter.
    info.output_flags = OBS_SOURCE_VIDEO | OBS_SOURCE_SRGB;
    info.get_name = [](void*) { return kFilterName; };
    info.create = [](obs_data_t* settings, obs_source_t* filter) -> void* {
        auto* const effects = new Effects(filter);
        effects->readMonitor(settings);
        return effects;
    };
    info.destroy = [](void* data) { delete static_cast<Effects*>(data); };
    info.update = [](void* data, obs_data_t* settings) { effectsOf(data).readMonitor(settings); };
    info.video_tick = [](void* data, float) { effectsOf(data).look(); };
    info.video_render = [](void* data, gs_effect_t*) { effectsOf(data).draw(); };
    obs_register_source(&info);
}

} // namespace

bool pointereffects::addTo(obs_source_t* capture)
{
    if (!obs_source_get_display_name(kFilterId))
        registerType();
    const ObsSourceHandle filter(obs_source_create_private(kFilterId, kFilterName, nullptr));
    auto* const effects = filter ? static_cast<Effects*>(obs_obj_get_data(filter.get())) : nullptr;
    if (!effects)
        return false;
    effects->follow(capture);
    obs_source_filter_add(capture, filter.get());
    return true;
}

void pointereffects::setMonitor(obs_source_t* capture, const std::optional<QPoint>& originPx, double pixelRatio)
{
    const ObsSourceHandle filter(obs_source_get_filter_by_name(capture, kFilterName));
    if (!filter)
        return;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), kHasOrigin, originPx.has_value());
    obs_data_set_int(settings.get(), kOriginX, originPx.value_or(QPoint()).x());
    obs_data_set_int(settings.get(), kOriginY, originPx.value_or(QPoint()).y());
    obs_data_set_double(settings.get(), kPixelRatio, pixelRatio);
    obs_source_update(filter.get(), settings.get());
}
