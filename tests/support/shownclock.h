// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <cstdint>
#include <optional>

/// What the test pattern's numbers in a recording say about when it was made, and about its clock.
struct ShownClock
{
    int64_t firstNs = 0; ///< When the first believable number began to be shown, on the clock of the numbers.
    int64_t lastNs = 0;  ///< The same of the last one.
    int astray = 0;      ///< Frames whose number is far from what the others say: it was torn while it was drawn.
    /// By how much the screen's clock ran ahead of the file's from the middle of its first half to that of its second.
    double driftSeconds = 0.0;
};

/// Reads the clock off all frames together: one number that was torn does not speak for the file.
///
/// @param numbers one for each frame, nothing where none could be read.
/// @param seconds the frames' times in the file.
/// @param nearNs  a moment of the recording: numbers wrap.
/// @return nothing where fewer than two numbers were read in a half of the file.
std::optional<ShownClock> readShownClock(const QList<std::optional<uint32_t>>& numbers, const QList<double>& seconds,
                                         int numbersPerSecond, int64_t nearNs);
