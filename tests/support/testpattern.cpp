// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testpattern.h"

#include <chrono>

namespace {

constexpr uint32_t kNumberMask = (1U << TestPattern::kBits) - 1;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int kDarkest = 96;
constexpr int kBrightest = 160;

uint32_t fromGray(uint32_t gray)
{
    for (uint32_t shift = 1; shift < 32; shift <<= 1)
        gray ^= gray >> shift;
    return gray;
}

} // namespace

// A 40th of the width leaves room for the strip's 26 blocks; even: no block shares a chroma sample with its
// neighbour.
TestPattern::TestPattern(const QSize& screenPx) : m_screen(screenPx), m_block(qMax(16, screenPx.width() / 40 & ~1)) {}

QList<TestPattern::Patch> TestPattern::patches() const
{
    static const QList<QColor> colours{{255, 0, 0}, {0, 255, 0},   {0, 0, 255},   {255, 255, 255},
                                       {0, 0, 0},   {255, 255, 0}, {0, 255, 255}, {128, 128, 128}};
    const QSize size(m_screen.width() / 12 & ~1, m_screen.height() / 6 & ~1);
    QList<Patch> patches;
    for (qsizetype index = 0; index < colours.size(); ++index) {
        const int left = static_cast<int>(m_screen.width() * (index + 1) / 10) & ~1;
        patches.append({QRect(QPoint(left, m_screen.height() / 8 & ~1), size), colours.at(index)});
    }
    return patches;
}

QRect TestPattern::strip() const
{
    const int width = m_block * blockCount();
    return {(m_screen.width() - width) / 2 & ~1, m_screen.height() * 5 / 8 & ~1, width, m_block};
}

QRect TestPattern::block(int index) const
{
    return {strip().left() + index * m_block, strip().top(), m_block, m_block};
}

bool TestPattern::isWhite(int index, uint32_t number)
{
    if (index == 0)
        return false;
    if (index > kBits)
        return true;
    const uint32_t gray = (number & kNumberMask) ^ ((number & kNumberMask) >> 1);
    return ((gray >> (kBits - index)) & 1U) != 0;
}

std::optional<uint32_t> TestPattern::numberFromBlocks(const QList<int>& brightness)
{
    if (brightness.size() != kBits + 2 || brightness.first() > kDarkest || brightness.last() < kBrightest)
        return std::nullopt;
    uint32_t gray = 0;
    for (int index = 1; index <= kBits; ++index) {
        const int value = brightness.at(index);
        if (value > kDarkest && value < kBrightest)
            return std::nullopt;
        gray = (gray << 1) | (value >= kBrightest ? 1U : 0U);
    }
    return fromGray(gray);
}

QRect TestPattern::sweepArea() const
{
    return {0, m_screen.height() * 3 / 4 & ~1, m_screen.width(), m_screen.height() / 8 & ~1};
}

int64_t monotonicNow()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

uint32_t numberAt(int64_t monotonicNs, int numbersPerSecond)
{
    const int64_t seconds = monotonicNs / kNanosecondsPerSecond;
    const int64_t rest = monotonicNs % kNanosecondsPerSecond;
    const int64_t number = seconds * numbersPerSecond + rest * numbersPerSecond / kNanosecondsPerSecond;
    return static_cast<uint32_t>(number) & kNumberMask;
}

int64_t momentOfNumber(uint32_t number, int numbersPerSecond, int64_t nearMonotonicNs)
{
    // The difference on the ring of numbers, brought into -half..+half.
    const int64_t ring = int64_t{kNumberMask} + 1;
    const int64_t seconds = nearMonotonicNs / kNanosecondsPerSecond;
    const int64_t rest = nearMonotonicNs % kNanosecondsPerSecond;
    const int64_t near = seconds * numbersPerSecond + rest * numbersPerSecond / kNanosecondsPerSecond;
    int64_t difference = (int64_t{number} - near) % ring;
    if (difference > ring / 2)
        difference -= ring;
    else if (difference < -ring / 2)
        difference += ring;
    const int64_t whole = near + difference;
    const int64_t wholeSeconds = whole / numbersPerSecond;
    const int64_t part = whole % numbersPerSecond;
    // Rounded up: the first nanosecond at which numberAt() gives this number.
    return wholeSeconds * kNanosecondsPerSecond +
           (part * kNanosecondsPerSecond + numbersPerSecond - 1) / numbersPerSecond;
}
