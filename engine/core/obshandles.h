// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <obs.h>

#include <memory>

/// Owning handles of libobs' objects: no other file calls a release or destroy function. A function that returns a new
/// reference is wrapped at once: `ObsSourceHandle source(obs_get_output_source(1))`.
namespace obshandles {

template <auto Release>
struct Releaser
{
    template <typename T>
    void operator()(T* object) const
    {
        Release(object);
    }
};

template <typename T, auto Release>
using Handle = std::unique_ptr<T, Releaser<Release>>;

} // namespace obshandles

using ObsDataHandle = obshandles::Handle<obs_data_t, obs_data_release>;
using ObsSourceHandle = obshandles::Handle<obs_source_t, obs_source_release>;
using ObsSceneHandle = obshandles::Handle<obs_scene_t, obs_scene_release>;
using ObsOutputHandle = obshandles::Handle<obs_output_t, obs_output_release>;
using ObsEncoderHandle = obshandles::Handle<obs_encoder_t, obs_encoder_release>;
using ObsDisplayHandle = obshandles::Handle<obs_display_t, obs_display_destroy>;
using ObsFaderHandle = obshandles::Handle<obs_fader_t, obs_fader_destroy>;
using ObsVolmeterHandle = obshandles::Handle<obs_volmeter_t, obs_volmeter_destroy>;
using ObsPropertiesHandle = obshandles::Handle<obs_properties_t, obs_properties_destroy>;

struct ObsSignalDisconnect
{
    const char* signal = nullptr;
    signal_callback_t callback = nullptr;
    void* data = nullptr;

    void operator()(signal_handler_t* handler) const { signal_handler_disconnect(handler, signal, callback, data); }
};

/// A connection to a signal. Holds a reference on the signal handler, so it may outlive the sender. Cutting it waits
/// for a running callback: never do it while holding a lock that the callback takes.
using ObsSignalConnection = std::unique_ptr<signal_handler_t, ObsSignalDisconnect>;

inline ObsSignalConnection connectSignal(signal_handler_t* handler, const char* signal, signal_callback_t callback,
                                         void* data)
{
    signal_handler_connect_ref(handler, signal, callback, data);
    return {handler, ObsSignalDisconnect{signal, callback, data}};
}
