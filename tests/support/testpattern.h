// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QList>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <optional>

/// The pattern that fills the screen while a test or a measurement records it: patches of known colours, and a strip of
/// black and white blocks that shows a number. The number is the clock: it is derived from CLOCK_MONOTONIC alone, so a
/// decoded frame says at which moment of the machine it was captured, without a word between the processes.
///
/// Everything is in physical pixels. The program `kestrano_test_pattern` draws it; tests/support/mediafile.h reads it.
class TestPattern
{
public:
    struct Patch
    {
        QRect area;
        QColor colour;
    };

    /// Bits of the number on the strip; at 30 numbers a second it wraps after 155 hours.
    static constexpr int kBits = 24;

    explicit TestPattern(const QSize& screenPx);

    QSize screen() const { return m_screen; }
    QColor background() const { return QColor(64, 64, 64); }

    /// The known colours, one patch each, all well away from the strip.
    QList<Patch> patches() const;

    /// The whole strip: a black guard block, kBits blocks with the highest bit first, a white guard block.
    QRect strip() const;
    int blockCount() const { return kBits + 2; }
    /// Block @p index of the strip, 0 being the black guard.
    QRect block(int index) const;
    /// Whether block @p index is white while the strip shows @p number. Gray code: from one number to the next exactly
    /// one block changes, so a frame that was torn between two numbers still shows one of the two.
    static bool isWhite(int index, uint32_t number);

    /// The number of the blocks' brightnesses (0..255, one for each block of the strip), or nothing where the guards
    /// are not as drawn or a block is neither black nor white.
    static std::optional<uint32_t> numberFromBlocks(const QList<int>& brightness);

    /// The area in which a bar sweeps when the pattern is asked to move, to give an encoder work.
    QRect sweepArea() const;

private:
    QSize m_screen;
    int m_block;
};

/// The clock that the numbers are read off, CLOCK_MONOTONIC, in nanoseconds.
int64_t monotonicNow();

/// The number that a strip running at @p numbersPerSecond shows at @p monotonicNs.
uint32_t numberAt(int64_t monotonicNs, int numbersPerSecond);

/// The moment at which @p number began to be shown, the one nearest to @p nearMonotonicNs (numbers wrap).
int64_t momentOfNumber(uint32_t number, int numbersPerSecond, int64_t nearMonotonicNs);
