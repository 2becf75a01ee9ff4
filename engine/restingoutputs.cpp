#include "engine/restingoutputs.h"

#include "app/sclogger.h"

#include <QThread>

#include <util/platform.h>
#include <utility>

#include <algorithm>

namespace {

constexpr char kStopSignal[] = "stop";
constexpr int kLookIntervalMs = 10;

std::uint64_t inNs(std::chrono::nanoseconds time)
{
    return static_cast<std::uint64_t>(time.count());
}

} // namespace

RestingOutputs::Resting::Resting(ObsOutputHandle taken, std::uint64_t ended, CaptureProgress& used)
    : output(std::move(taken)), endedNs(ended), lines(used)
{}

bool RestingOutputs::Resting::isBusy() const
{
    return endedNs == 0 || obs_output_active(output.get());
}

bool RestingOutputs::Resting::isReleaseDue(std::chrono::nanoseconds delay) const
{
    if (isBusy())
        return false;
    // First the end, which may be noted on another thread at this moment.
    const std::uint64_t ended = endedNs;
    return os_gettime_ns() - ended >= inNs(delay);
}

RestingOutputs::RestingOutputs(CaptureProgress& lines, const DeferredRelease& times) : m_lines(lines), m_times(times)
{
    m_timer.setInterval(kLookIntervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
}

RestingOutputs::~RestingOutputs()
{
    waitUntilNoneIsBusy();
    for (Resting& resting : m_resting) {
        resting.stopSignal.reset();
        if (resting.isBusy()) {
            // To lose it is better than to take it from under its thread.
            const obs_output_t* const lost = resting.output.release();
            SCLogger::warning(QStringLiteral("Still busy with its file and left behind: %1")
                                  .arg(QLatin1String(obs_output_get_name(lost))));
            continue;
        }
        const std::uint64_t restedNs = os_gettime_ns() - resting.endedNs;
        const std::uint64_t shortestNs = inNs(m_times.shortestDelay);
        if (restedNs < shortestNs)
            QThread::usleep(static_cast<unsigned long>((shortestNs - restedNs) / 1000));
    }
}

void RestingOutputs::keep(ObsOutputHandle output, std::uint64_t endedNs)
{
    m_resting.emplace_back(std::move(output), endedNs, m_lines);
    m_timer.start();
}

void RestingOutputs::keepStarting(ObsOutputHandle output, const std::atomic<std::uint64_t>& endedNs)
{
    Resting& resting = m_resting.emplace_back(std::move(output), std::uint64_t{0}, m_lines);
    resting.stopSignal = ObsSignalConnection(obs_output_get_signal_handler(resting.output.get()), kStopSignal,
                                             &RestingOutputs::onStopped, &resting);
    // It may have ended before it was followed.
    const std::uint64_t ended = endedNs;
    if (ended != 0)
        resting.endedNs = ended;
    m_timer.start();
}

bool RestingOutputs::isAnyBusy() const
{
    return std::any_of(m_resting.begin(), m_resting.end(), [](const Resting& resting) { return resting.isBusy(); });
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
    std::erase_if(m_resting, [this](const Resting& resting) { return resting.isReleaseDue(m_times.delay); });
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

void RestingOutputs::waitUntilNoneIsBusy()
{
    constexpr int kStepMs = 10;
    for (int waitedMs = 0; waitedMs < m_times.busyLimit.count() && isAnyBusy(); waitedMs += kStepMs) {
        stopWhatRuns();
        QThread::msleep(kStepMs);
    }
}
