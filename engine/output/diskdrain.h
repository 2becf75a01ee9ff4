// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Finds out, asked every few milliseconds, when the disk has taken all that the encoders of an output have returned.
///
/// A stop of the stock output drops what is not written yet. The output counts a packet before it writes it, so a disk
/// that is busy with one looks like one that has nothing left to do: only a count that has not changed for a while
/// tells. Ask only while the output gets nothing new. Belongs to one thread.
class DiskDrain
{
public:
    /// Begins again with the next question.
    void reset() { m_beginNs = 0; }

    /// @param bytes the output's count
    /// @return whether everything is written, or the disk has had five seconds for it, of which the log then tells
    bool isOver(std::uint64_t bytes, std::uint64_t nowNs);

private:
    std::uint64_t m_beginNs = 0;
    std::uint64_t m_changeNs = 0;
    std::uint64_t m_quietNs = 0;
    std::uint64_t m_bytes = 0;
};
