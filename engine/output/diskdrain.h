// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Finds out when the disk has taken all that an output's encoders have returned (docs/stopping.md): the output counts
/// a packet before it writes it, so the count has to be unchanged for a while. Ask every few milliseconds, while the
/// output gets nothing new. One thread.
class DiskDrain
{
public:
    void reset() { m_beginNs = 0; }

    /// @param bytes the output's count
    /// @return true also after five seconds, which is logged
    bool isOver(std::uint64_t bytes, std::uint64_t nowNs);

private:
    std::uint64_t m_beginNs = 0;
    std::uint64_t m_changeNs = 0;
    std::uint64_t m_quietNs = 0;
    std::uint64_t m_bytes = 0;
};
