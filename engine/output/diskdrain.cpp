// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/diskdrain.h"

#include "app/sclogger.h"

namespace {

constexpr std::uint64_t kNsPerMs = 1'000'000;
constexpr std::uint64_t kQuietNs = 120 * kNsPerMs;
/// What is written later than this has piled up behind a slow disk, which may be busy with one packet for longer.
constexpr std::uint64_t kBacklogNs = 50 * kNsPerMs;
constexpr std::uint64_t kQuietOfSlowDiskNs = 500 * kNsPerMs;
constexpr std::uint64_t kLimitNs = 5'000 * kNsPerMs;

} // namespace

bool DiskDrain::isOver(std::uint64_t bytes, std::uint64_t nowNs)
{
    if (m_beginNs == 0) {
        m_beginNs = m_changeNs = nowNs;
        m_quietNs = kQuietNs;
        m_bytes = bytes;
    }
    const std::uint64_t waitedNs = nowNs - m_beginNs;
    if (bytes != m_bytes) {
        m_bytes = bytes;
        m_changeNs = nowNs;
        if (waitedNs >= kBacklogNs)
            m_quietNs = kQuietOfSlowDiskNs;
    }
    if (nowNs - m_changeNs >= m_quietNs)
        return true;
    if (waitedNs < kLimitNs)
        return false;
    SCLogger::warning(QStringLiteral("The disk is slow, the recording ends without what it has not taken yet"));
    return true;
}
