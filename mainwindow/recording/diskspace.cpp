// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/diskspace.h"

namespace {

constexpr qint64 kReserveSeconds = 20;
constexpr qint64 kLeastReserveBytes = 4'000'000;
/// AVI and MP4 get their index when they are closed: up to 80 packets a second, of at most 24 bytes each.
constexpr qint64 kIndexBytesPerSecond = qint64{80} * 24;
constexpr qint64 kSpanMs = 10'000;
constexpr qint64 kShortestSpanMs = 1'000;

} // namespace

qint64 diskspace::reserve(qint64 bytesPerSecond, qint64 recordedMs)
{
    const qint64 closing = kIndexBytesPerSecond * (recordedMs / 1000);
    return closing + qMax(kLeastReserveBytes, kReserveSeconds * bytesPerSecond);
}

qint64 diskspace::minutesThatFit(qint64 freeBytes, qint64 bytesPerSecond)
{
    const qint64 usable = freeBytes - reserve(bytesPerSecond, 0);
    return qMax<qint64>(usable, 0) / (60 * (bytesPerSecond + kIndexBytesPerSecond));
}

void diskspace::GrowthRate::add(qint64 bytes, qint64 atMs)
{
    m_sizes.append({bytes, atMs});
    while (atMs - m_sizes.constFirst().atMs > kSpanMs)
        m_sizes.removeFirst();
}

qint64 diskspace::GrowthRate::bytesPerSecond() const
{
    if (m_sizes.isEmpty())
        return 0;
    const Size& first = m_sizes.constFirst();
    const Size& last = m_sizes.constLast();
    const qint64 spanMs = last.atMs - first.atMs;
    return spanMs < kShortestSpanMs ? 0 : qMax<qint64>(last.bytes - first.bytes, 0) * 1000 / spanMs;
}
