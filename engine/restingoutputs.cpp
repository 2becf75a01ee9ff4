#include "engine/restingoutputs.h"

#include <QThread>

#include <util/platform.h>

namespace {

constexpr int kLookIntervalMs = 1000;
constexpr std::uint64_t kRestNs = 10'000'000'000;
constexpr std::uint64_t kShortestRestNs = 1'000'000'000;

} // namespace

RestingOutputs::RestingOutputs()
{
    m_timer.setInterval(kLookIntervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { releaseRested(); });
}

RestingOutputs::~RestingOutputs()
{
    for (const Resting& resting : m_resting) {
        const std::uint64_t restedNs = os_gettime_ns() - resting.endedNs;
        if (restedNs < kShortestRestNs)
            QThread::usleep(static_cast<unsigned long>((kShortestRestNs - restedNs) / 1000));
    }
}

void RestingOutputs::keep(ObsOutputHandle output, std::uint64_t endedNs)
{
    m_resting.push_back({std::move(output), endedNs});
    m_timer.start();
}

void RestingOutputs::releaseRested()
{
    const std::uint64_t nowNs = os_gettime_ns();
    std::erase_if(m_resting, [nowNs](const Resting& resting) { return nowNs - resting.endedNs >= kRestNs; });
    if (m_resting.empty())
        m_timer.stop();
}
