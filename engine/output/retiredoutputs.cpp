// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/retiredoutputs.h"

#include "app/sclogger.h"
#include "engine/capture/screenvideo.h"
#include "engine/core/waituntil.h"
#include "engine/output/videoblock.h"
#include "platform/process/free_memory.h"

#include <util/platform.h>
#include <utility>

#include <algorithm>
#include <optional>
#include <thread>
#include <vector>

namespace {

constexpr char kStopSignal[] = "stop";
constexpr int kPollIntervalMs = 10;

/// Of outputs that are never released. Never destroyed, because their threads run until the process ends.
std::vector<std::shared_ptr<ScreenVideo>>& lostVideos()
{
    static auto& videos = *new std::vector<std::shared_ptr<ScreenVideo>>;
    return videos;
}

/// Keeps an output out of the callbacks of both streams while it lives.
class OutputBlock
{
public:
    /// @param video of the output; null means the engine's
    OutputBlock(StreamTap& tap, video_output* video) : m_quiesce(tap, tap.isConnectedTo(video))
    {
        // The engine counts a block as activity, and its video could not be reset: only where the tap is elsewhere.
        if (!tap.isConnectedTo(video) && (video || tap.isConnected()))
            m_video.emplace(video);
    }

private:
    StreamTap::Quiesce m_quiesce;
    std::optional<VideoBlock> m_video;
};

} // namespace

RetiredOutputs::Retired::Retired(ObsOutputHandle taken, std::shared_ptr<ScreenVideo> recorded, std::uint64_t ended,
                                 std::chrono::nanoseconds releaseDelay, StreamTap& used)
    : video(std::move(recorded)), output(std::move(taken)), endedNs(ended), delay(releaseDelay), tap(used)
{}

video_output* RetiredOutputs::Retired::videoOutput() const
{
    return video ? video->video() : nullptr;
}

bool RetiredOutputs::Retired::isBusy() const
{
    return endedNs == 0 || obs_output_active(output.get());
}

bool RetiredOutputs::Retired::isEnding() const
{
    return endedNs != 0 && obs_output_active(output.get());
}

std::chrono::nanoseconds RetiredOutputs::Retired::remaining(std::chrono::nanoseconds limit) const
{
    // First the end, which may be noted on another thread at this moment.
    const std::uint64_t ended = endedNs;
    return std::min(delay, limit) - std::chrono::nanoseconds(os_gettime_ns() - ended);
}

RetiredOutputs::RetiredOutputs(StreamTap& tap, const DeferredRelease& times) : m_tap(tap), m_times(times)
{
    m_timer.setInterval(kPollIntervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { poll(); });
}

RetiredOutputs::~RetiredOutputs()
{
    const auto isIdle = [this] {
        stopRunning();
        return !isAnyBusy();
    };
    waitUntil(isIdle, m_times.busyLimit);
    for (Retired& retired : m_outputs) {
        retired.stopSignal.reset();
        if (retired.isBusy()) {
            // To lose it is better than to take it from under its thread.
            const obs_output_t* const lost = retired.output.release();
            lostVideos().push_back(std::move(retired.video));
            SCLogger::warning(QStringLiteral("Still busy with its file and left behind: %1")
                                  .arg(QLatin1String(obs_output_get_name(lost))));
            continue;
        }
        std::this_thread::sleep_for(retired.remaining(m_times.shortestDelay));
    }
}

void RetiredOutputs::add(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video)
{
    add(std::move(output), std::move(video), os_gettime_ns(), std::chrono::nanoseconds(0));
}

void RetiredOutputs::addEnded(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video, std::uint64_t endedNs)
{
    add(std::move(output), std::move(video), endedNs, m_times.delay);
}

void RetiredOutputs::addStarting(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video,
                                 const std::atomic<std::uint64_t>& endedNs)
{
    Retired& retired = add(std::move(output), std::move(video), 0, m_times.delay);
    retired.stopSignal = connectSignal(obs_output_get_signal_handler(retired.output.get()), kStopSignal,
                                       &RetiredOutputs::onStopped, &retired);
    // It may have ended before it was followed.
    const std::uint64_t ended = endedNs;
    if (ended != 0)
        retired.endedNs = ended;
}

RetiredOutputs::Retired& RetiredOutputs::add(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video,
                                             std::uint64_t endedNs, std::chrono::nanoseconds delay)
{
    m_timer.start();
    return m_outputs.emplace_back(std::move(output), std::move(video), endedNs, delay, m_tap);
}

bool RetiredOutputs::isAnyBusy() const
{
    return std::any_of(m_outputs.begin(), m_outputs.end(), [](const Retired& retired) { return retired.isBusy(); });
}

bool RetiredOutputs::waitWhileEnding() const
{
    const auto endsWithEngineVideo = [](const Retired& retired) { return !retired.video && retired.isEnding(); };
    waitUntil([&] { return std::none_of(m_outputs.begin(), m_outputs.end(), endsWithEngineVideo); }, m_times.endLimit);
    return std::any_of(m_outputs.begin(), m_outputs.end(),
                       [](const Retired& retired) { return !retired.video && retired.isBusy(); });
}

void RetiredOutputs::onStopped(void* retired, calldata_t*)
{
    auto& self = *static_cast<Retired*>(retired);
    // First, for whoever quiesces the streams to stop it.
    self.endedNs = os_gettime_ns();
    // Inside stop() the streams are blocked already.
    if (std::this_thread::get_id() == self.thread)
        return;
    // The output frees its encoders as soon as this returns, and the streams may still be inside. Where the tap is not
    // connected audio cannot be blocked; that is the case between the output's beginning and the next poll.
    const OutputBlock block(self.tap, self.videoOutput());
}

void RetiredOutputs::poll()
{
    stopRunning();
    releaseDue();
}

void RetiredOutputs::releaseDue()
{
    const auto released = std::erase_if(m_outputs, [](const Retired& retired) {
        return !retired.isBusy() && retired.remaining(retired.delay) <= std::chrono::nanoseconds(0);
    });
    if (!m_outputs.empty())
        return;
    m_timer.stop();
    // Each encoder has threads of its own, and the allocator keeps what each of them had. Those of a recording that
    // runs would wait for the allocator; its own end gives back everything.
    if (released > 0 && !m_tap.isConnected())
        platform::returnFreeMemory();
}

void RetiredOutputs::stopRunning()
{
    for (Retired& retired : m_outputs) {
        if (retired.endedNs == 0 && obs_output_active(retired.output.get()))
            stop(retired);
    }
}

void RetiredOutputs::stop(Retired& retired)
{
    // For a recording that runs meanwhile it is connected already. The streams may be blocked for that one's end, and
    // libobs would let nobody else connect until they go on.
    const bool wasConnected = m_tap.isConnected();
    if (!wasConnected)
        m_tap.connect(obs_output_get_mixer(retired.output.get()), retired.videoOutput());
    {
        const OutputBlock block(m_tap, retired.videoOutput());
        // One that has ended by itself in between is closing its file.
        if (retired.endedNs == 0)
            obs_output_stop(retired.output.get());
    }
    if (!wasConnected)
        m_tap.disconnect();
}
