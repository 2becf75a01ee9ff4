// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/videoprobe.h"

#include "engine/core/obshandles.h"
#include "engine/core/rawvideo.h"
#include "engine/core/waituntil.h"

#include <atomic>
#include <chrono>

namespace {

constexpr char kOutputId[] = "kestrano_video_probe";
constexpr std::chrono::seconds kFrameLimit{1};

/// The data of an output that takes note of its first frame.
struct Probe
{
    obs_output_t* output;
    std::atomic<bool> hasFrame{false};
};

obs_output_info probeOutput()
{
    obs_output_info info{};
    info.id = kOutputId;
    info.flags = OBS_OUTPUT_VIDEO;
    info.get_name = [](void*) { return kOutputId; };
    info.create = [](obs_data_t*, obs_output_t* output) -> void* { return new Probe{output}; };
    info.destroy = [](void* probe) { delete static_cast<Probe*>(probe); };
    info.start = [](void* probe) {
        obs_output_t* const output = static_cast<Probe*>(probe)->output;
        return obs_output_can_begin_data_capture(output, 0) && obs_output_begin_data_capture(output, 0);
    };
    info.stop = [](void* probe, uint64_t) { obs_output_end_data_capture(static_cast<Probe*>(probe)->output); };
    info.raw_video = [](void* probe, video_data*) { static_cast<Probe*>(probe)->hasFrame = true; };
    return info;
}

} // namespace

bool deliversFramesOf(video_output* video)
{
    // A type stays registered as long as the core runs.
    const obs_output_info info = probeOutput();
    if (!obs_output_get_display_name(kOutputId))
        obs_register_output(&info);
    const ObsOutputHandle output(obs_output_create(kOutputId, kOutputId, nullptr, nullptr));
    if (!output)
        return false;
    const video_scale_info conversion = conversionOf(video);
    obs_output_set_media(output.get(), video, obs_get_audio());
    obs_output_set_video_conversion(output.get(), &conversion);
    const auto* const probe = static_cast<const Probe*>(obs_obj_get_data(output.get()));
    const bool delivers =
        obs_output_start(output.get()) && waitUntil([probe] { return probe->hasFrame.load(); }, kFrameLimit);
    // libobs ends it on a thread of its own.
    obs_output_stop(output.get());
    waitUntil([&output] { return !obs_output_active(output.get()); }, kFrameLimit);
    return delivers;
}
