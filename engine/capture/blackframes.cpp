// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/blackframes.h"

#include <algorithm>

namespace {

constexpr std::uint8_t kBlackLuma = 0;
constexpr std::uint8_t kNoChroma = 128;

void fill(const I420View& frame, int plane, int rows, std::uint8_t value)
{
    std::fill_n(frame.planes[plane], static_cast<std::ptrdiff_t>(frame.stridesBytes[plane]) * rows, value);
}

} // namespace

void BlackFrames::write(const I420View& frame)
{
    if (m_written.contains(frame.planes[0]))
        return;
    m_written.insert(frame.planes[0]);
    fill(frame, 0, m_size.height(), kBlackLuma);
    fill(frame, 1, m_size.height() / 2, kNoChroma);
    fill(frame, 2, m_size.height() / 2, kNoChroma);
}
