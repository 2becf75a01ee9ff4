// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>

/// The flash and the beep of kestrano_bench_avsignal.
namespace avsignal {

inline constexpr int kSamplesPerSecond = 48000;
inline constexpr double kBeepHz = 1000;
inline constexpr double kAmplitude = 0.5;
/// How long both last.
inline constexpr double kSeconds = 0.3;

/// White during the flash, else black; in pixels of the screen.
inline QRect flashArea(const QSize& screen)
{
    return {screen.width() / 2 - 80, screen.height() / 2 - 80, 160, 160};
}

} // namespace avsignal
