// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/retiredoutputs.h"

#include "app/sclogger.h"
#include "engine/core/waituntil.h"

#include <util/platform.h>
#include <utility>

#include <algorithm>
#include <thread>

namespace {

constexpr char kStopSignal[] = "stop";
constexpr int kPollIntervalMs = 10;

} // namespace

RetiredOutputs::Retired::Retired(ObsOutputHandle taken, std::uint64_t ended, std::chrono::nanoseconds releaseDelay,
                                 StreamTap& used)
    : output(std::move(taken)), endedNs(ended), delay(releaseDelay), tap(used)
{}

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
            SCLogger::warning(QStringLiteral("Still busy with its file and left behind: %1")
                                  .arg(QLatin1String(obs_output_get_name(lost))));
            continue;
        }
        std::this_thread::sleep_for(retired.remaining(m_times.shortestDelay));
    }
}

void RetiredOutputs::add(ObsOutputHandle output)
{
    add(std::move(output), os_gettime_ns(), std::chrono::nanoseconds(0));
}

void RetiredOutputs::addEnded(ObsOutputHandle output, std::uint64_t endedNs)
{
    add(std::move(output), endedNs, m_times.delay);
}

void RetiredOutputs::addStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs)
{
    Retired& retired = add(std::move(output), 0, m_times.delay);
    retired.stopSignal = connectSignal(obs_output_get_signal_handler(retired.output.get()), kStopSignal,
                                       &RetiredOutputs::onStopped, &retired);
    // It may have ended before it was followed.
    const std::uint64_t ended = endedNs;
    if (ended != 0)
        retired.endedNs = ended;
}

RetiredOutputs::Retired& RetiredOutputs::add(ObsOutputHandle output, std::uint64_t endedNs,
                                             std::chrono::nanoseconds delay)
{
    m_timer.start();
    return m_outputs.emplace_back(std::move(output), endedNs, delay, m_tap);
}

bool RetiredOutputs::isAnyBusy() const
{
    return std::any_of(m_outputs.begin(), m_outputs.end(), [](const Retired& retired) { return retired.isBusy(); });
}

bool RetiredOutputs::waitWhileEnding() const
{
    const auto hasEnded = [](const Retired& retired) { return !retired.isEnding(); };
    waitUntil([&] { return std::all_of(m_outputs.begin(), m_outputs.end(), hasEnded); }, m_times.endLimit);
    return isAnyBusy();
}

void RetiredOutputs::onStopped(void* retired, calldata_t*)
{
    auto& self = *static_cast<Retired*>(retired);
    // First, for whoever quiesces the streams to stop it.
    self.endedNs = os_gettime_ns();
    // The output frees its encoders as soon as this returns, and the streams may still be inside. Where the tap is not
    // connected they cannot be blocked; that is the case between the output's beginning and the next poll.
    const StreamTap::Quiesce quiesce(self.tap);
}

void RetiredOutputs::poll()
{
    stopRunning();
    releaseDue();
}

void RetiredOutputs::releaseDue()
{
    std::erase_if(m_outputs, [](const Retired& retired) {
        return !retired.isBusy() && retired.remaining(retired.delay) <= std::chrono::nanoseconds(0);
    });
    if (m_outputs.empty())
        m_timer.stop();
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
        m_tap.connect(obs_output_get_mixer(retired.output.get()));
    {
        const StreamTap::Quiesce quiesce(m_tap);
        // One that has ended by itself in between is closing its file.
        if (retired.endedNs == 0)
            obs_output_stop(retired.output.get());
    }
    if (!wasConnected)
        m_tap.disconnect();
}
