// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/capturesource.h"

#include "engine/capture/capturetargets.h"
#include "engine/capture/exactpixels.h"
#include "engine/capture/pointereffects.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>

namespace {

constexpr char kCropFilterId[] = "crop_filter";
constexpr char kReleasedName[] = "Released capture";

constexpr char kFixedCircleColor[] = "0.0, 1.0, 0.5, 0.3";
constexpr char kLeftClickColor[] = "0.0, 0.0, 1.0, 0.7";
constexpr char kRightClickColor[] = "1.0, 0.0, 0.0, 0.7";

/// libobs makes an empty shell for a type it does not know or that could not be set up; that is no source to capture
/// with.
ObsSourceHandle onlyIfReal(ObsSourceHandle source)
{
    return source && !obs_obj_invalid(source.get()) ? std::move(source) : nullptr;
}

/// A display name can be missing only together with the type itself.
const char* displayName(const char* id)
{
    const char* name = obs_source_get_display_name(id);
    return name ? name : id;
}

ObsSourceHandle findCropFilter(obs_source_t* capture)
{
    const char* name = displayName(kCropFilterId);
    ObsSourceHandle filter(obs_source_get_filter_by_name(capture, name));
    if (filter)
        return filter;
    filter.reset(obs_source_create(kCropFilterId, name, nullptr, nullptr));
    obs_source_filter_add(capture, filter.get());
    return filter;
}

double pixelRatio()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen ? screen->devicePixelRatio() : 1.0;
}

void addToScene(void* source, obs_scene_t* scene)
{
    obs_scene_add(scene, static_cast<obs_source_t*>(source));
}

} // namespace

bool CaptureSource::create(bool window, obs_scene_t* scene)
{
    const CaptureSourceKind& made = kind(window);
    // libobs destroys a source some time after its release, and from version 30 on gives a new one of the same name
    // another name until then.
    if (m_source)
        obs_source_set_name(m_source.get(), kReleasedName);
    m_source.reset();
    m_crop.reset();
    m_chosenList = {};
    m_chosenValue.clear();
    m_kind = &made;
    const ObsDataHandle settings(obs_data_create());
    if (isClosed())
        obs_data_set_int(settings.get(), made.targets.key, *made.noTarget);
    m_source = onlyIfReal(ObsSourceHandle(obs_source_create(made.sourceId, made.sourceName, settings.get(), nullptr)));
    if (!m_source)
        return false;
    obs_scene_atomic_update(scene, addToScene, m_source.get());
    // Before the filter that crops: what comes later is applied later.
    pointereffects::addTo(m_source.get());
    return true;
}

void CaptureSource::refreshTargets(bool window)
{
    m_targetNames.clear();
    m_targetValues.clear();
    if (!m_source)
        return;
    const CaptureSourceKind& listed = kind(window);
    const ObsPropertiesHandle properties(obs_source_properties(m_source.get()));
    m_targets = listed.targets;
    if (listed.secondChoice.key && !obs_properties_get(properties.get(), listed.targets.key))
        m_targets = listed.secondChoice;
    const ListEntries entries = readList(properties.get(), m_targets);
    m_targetNames = entries.names;
    m_targetValues = entries.values;
    // libobs 31 and newer list it.
    const qsizetype none = listed.noTarget ? m_targetValues.indexOf(QString::number(*listed.noTarget)) : -1;
    if (none >= 0) {
        m_targetNames.removeAt(none);
        m_targetValues.removeAt(none);
    }
}

void CaptureSource::setOpen(bool open)
{
    if (!m_isClosable || open == m_isOpen)
        return;
    m_isOpen = open;
    if (!m_source)
        return;
    writeTarget();
    obs_source_update(m_source.get(), nullptr);
}

bool CaptureSource::setTarget(bool window, const QString& name, const QMargins& crop)
{
    const qsizetype index = m_targetNames.indexOf(name);
    if (index < 0 || !m_source)
        return false;
    selectTarget(window, index);
    placePointerEffects(window, name);
    m_crop = crop;
    m_screenSize = window ? QSize() : captureTargetGeometry(name).size();
    setCrop(exactCrop());
    return true;
}

void CaptureSource::videoWasReset()
{
    if (m_source && m_crop)
        setCrop(exactCrop());
}

QMargins CaptureSource::exactCrop() const
{
    obs_video_info video{};
    if (m_screenSize.isEmpty() || !obs_get_video_info(&video))
        return *m_crop;
    const QSize size(static_cast<int>(video.output_width), static_cast<int>(video.output_height));
    return exactpixels::cropTo(size, *m_crop, m_screenSize);
}

void CaptureSource::selectTarget(bool window, qsizetype index)
{
    const CaptureSourceKind& chosen = kind(window);
    // The list in hand may be of the other kind; its second choice then says nothing about this one.
    const bool second = chosen.secondChoice.key && qstrcmp(chosen.secondChoice.key, m_targets.key) == 0;
    m_chosenList = second ? chosen.secondChoice : chosen.targets;
    m_chosenValue = (chosen.selectedByName ? m_targetNames : m_targetValues).at(index);
    writeTarget();
    const ObsDataHandle settings(obs_source_get_settings(m_source.get()));
    if (chosen.methodKey)
        obs_data_set_int(settings.get(), chosen.methodKey, chosen.method);
}

void CaptureSource::writeTarget()
{
    const ObsDataHandle settings(obs_source_get_settings(m_source.get()));
    if (isClosed())
        obs_data_set_int(settings.get(), m_kind->targets.key, *m_kind->noTarget);
    else if (!m_chosenList.key)
        obs_data_unset_user_value(settings.get(), m_kind->targets.key);
    else if (m_chosenList.kind == ListKind::Integer)
        obs_data_set_int(settings.get(), m_chosenList.key, m_chosenValue.toLongLong());
    else
        obs_data_set_string(settings.get(), m_chosenList.key, m_chosenValue.toUtf8().constData());
}

/// A source that is closed takes its settings over when it is opened. Before libobs 31 xshm_input reports an error each
/// time that it finds no target.
void CaptureSource::update(obs_data_t* settings)
{
    const ObsDataHandle present(obs_source_get_settings(m_source.get()));
    if (isClosed())
        obs_data_apply(present.get(), settings);
    else
        obs_source_update(m_source.get(), settings);
}

void CaptureSource::placePointerEffects(bool window, const QString& target)
{
    // Where a window lies on the desktop is not known here.
    const auto origin = window ? std::nullopt : std::optional(captureTargetGeometry(target).topLeft());
    pointereffects::setMonitor(m_source.get(), origin, pixelRatio());
}

void CaptureSource::setCrop(const QMargins& crop)
{
    const ObsSourceHandle filter = findCropFilter(m_source.get());
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), "relative", true);
    obs_data_set_int(settings.get(), "left", crop.left());
    obs_data_set_int(settings.get(), "top", crop.top());
    obs_data_set_int(settings.get(), "right", crop.right());
    obs_data_set_int(settings.get(), "bottom", crop.bottom());
    obs_data_set_int(settings.get(), "cx", 0);
    obs_data_set_int(settings.get(), "cy", 0);
    obs_source_update(filter.get(), settings.get());
    // The filter draws the whole frame into a texture first, whatever it crops: without a graphics card that is more
    // than a third of what a recording of the screen costs.
    obs_source_set_enabled(filter.get(), !crop.isNull());
}

void CaptureSource::setCursor(bool show)
{
    if (!m_source)
        return;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), m_platform.cursorKey, show);
    update(settings.get());
}

void CaptureSource::setCursorEffects(bool show)
{
    if (!m_source)
        return;
    const ObsDataHandle settings(obs_data_create());
    obs_data_set_bool(settings.get(), "show_fixed_circle", show);
    obs_data_set_string(settings.get(), "fixed_circle_color", kFixedCircleColor);
    obs_data_set_bool(settings.get(), "show_left_click", show);
    obs_data_set_string(settings.get(), "left_click_color", kLeftClickColor);
    obs_data_set_bool(settings.get(), "show_right_click", show);
    obs_data_set_string(settings.get(), "right_click_color", kRightClickColor);
    update(settings.get());
}

FramePointer CaptureSource::pointer() const
{
    if (!m_source)
        return {};
    const ObsDataHandle settings(obs_source_get_settings(m_source.get()));
    return {obs_data_get_bool(settings.get(), m_platform.cursorKey), PointerEffectChoice::from(settings.get()),
            static_cast<float>(pixelRatio())};
}
