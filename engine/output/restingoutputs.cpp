#include "engine/output/restingoutputs.h"

#include "app/sclogger.h"
#include "engine/core/waituntil.h"

#include <util/platform.h>
#include <utility>

#include <algorithm>
#include <thread>

namespace {

constexpr char kStopSignal[] = "stop";
constexpr int kLookIntervalMs = 10;

} // namespace

RestingOutputs::Resting::Resting(ObsOutputHandle taken, std::uint64_t ended, std::chrono::nanoseconds rest,
                                 CaptureProgress& used)
    : output(std::move(taken)), endedNs(ended), delay(rest), lines(used)
{}

bool RestingOutputs::Resting::isBusy() const
{
    return endedNs == 0 || obs_output_active(output.get());
}

bool RestingOutputs::Resting::isEnding() const
{
    return endedNs != 0 && obs_output_active(output.get());
}

std::chrono::nanoseconds RestingOutputs::Resting::remaining(std::chrono::nanoseconds limit) const
{
    // First the end, which may be noted on another thread at this moment.
    const std::uint64_t ended = endedNs;
    return std::min(delay, limit) - std::chrono::nanoseconds(os_gettime_ns() - ended);
}

RestingOutputs::RestingOutputs(CaptureProgress& lines, const DeferredRelease& times) : m_lines(lines), m_times(times)
{
    m_timer.setInterval(kLookIntervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
}

RestingOutputs::~RestingOutputs()
{
    const auto isIdle = [this] {
        stopWhatRuns();
        return !isAnyBusy();
    };
    waitUntil(isIdle, m_times.busyLimit);
    for (Resting& resting : m_resting) {
        resting.stopSignal.reset();
        if (resting.isBusy()) {
            // To lose it is better than to take it from under its thread.
            const obs_output_t* const lost = resting.output.release();
            SCLogger::warning(QStringLiteral("Still busy with its file and left behind: %1")
                                  .arg(QLatin1String(obs_output_get_name(lost))));
            continue;
        }
        std::this_thread::sleep_for(resting.remaining(m_times.shortestDelay));
    }
}

void RestingOutputs::keep(ObsOutputHandle output)
{
    add(std::move(output), os_gettime_ns(), std::chrono::nanoseconds(0));
}

void RestingOutputs::keepEnded(ObsOutputHandle output, std::uint64_t endedNs)
{
    add(std::move(output), endedNs, m_times.delay);
}

void RestingOutputs::keepStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs)
{
    Resting& resting = add(std::move(output), 0, m_times.delay);
    resting.stopSignal = connectSignal(obs_output_get_signal_handler(resting.output.get()), kStopSignal,
                                       &RestingOutputs::onStopped, &resting);
    // It may have ended before it was followed.
    const std::uint64_t ended = endedNs;
    if (ended != 0)
        resting.endedNs = ended;
}

RestingOutputs::Resting& RestingOutputs::add(ObsOutputHandle output, std::uint64_t endedNs,
                                             std::chrono::nanoseconds delay)
{
    m_timer.start();
    return m_resting.emplace_back(std::move(output), endedNs, delay, m_lines);
}

bool RestingOutputs::isAnyBusy() const
{
    return std::any_of(m_resting.begin(), m_resting.end(), [](const Resting& resting) { return resting.isBusy(); });
}

bool RestingOutputs::waitWhileEnding() const
{
    const auto hasEnded = [](const Resting& resting) { return !resting.isEnding(); };
    waitUntil([&] { return std::all_of(m_resting.begin(), m_resting.end(), hasEnded); }, m_times.endLimit);
    return isAnyBusy();
}

void RestingOutputs::onStopped(void* resting, calldata_t*)
{
    auto& self = *static_cast<Resting*>(resting);
    // First, for whoever holds the lines to stop it.
    self.endedNs = os_gettime_ns();
    // The output frees its encoders as soon as this returns, and the lines may still be inside. Where they are not
    // connected they cannot be held; that is the case between its beginning and the next look.
    const CaptureProgress::StandStill still(self.lines);
}

void RestingOutputs::look()
{
    stopWhatRuns();
    releaseDue();
}

void RestingOutputs::releaseDue()
{
    std::erase_if(m_resting, [](const Resting& resting) {
        return !resting.isBusy() && resting.remaining(resting.delay) <= std::chrono::nanoseconds(0);
    });
    if (m_resting.empty())
        m_timer.stop();
}

void RestingOutputs::stopWhatRuns()
{
    for (Resting& resting : m_resting) {
        if (resting.endedNs == 0 && obs_output_active(resting.output.get()))
            stop(resting);
    }
}

void RestingOutputs::stop(Resting& resting)
{
    // For a recording that runs meanwhile they are connected already. They may be held for its end, and libobs would
    // let nobody else connect until they go on.
    const bool wasConnected = m_lines.isConnected();
    if (!wasConnected)
        m_lines.connect(obs_output_get_mixer(resting.output.get()));
    {
        const CaptureProgress::StandStill still(m_lines);
        // One that has ended by itself in between is closing its file.
        if (resting.endedNs == 0)
            obs_output_stop(resting.output.get());
    }
    if (!wasConnected)
        m_lines.disconnect();
}
