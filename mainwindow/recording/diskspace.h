// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

/// How much space a recording needs.
namespace diskspace {

/// With less to come the user is told before the start.
inline constexpr qint64 kFewMinutes = 10;

/// What has to be free beside a growing file: what closing it takes, and 20 seconds at the present rate, at least 4 MB.
qint64 reserve(qint64 bytesPerSecond, qint64 recordedMs);

/// Whole minutes until a recording has to end that writes at this rate from now on.
qint64 minutesThatFit(qint64 freeBytes, qint64 bytesPerSecond);

/// How fast a file grows, over its last ten seconds.
class GrowthRate
{
public:
    /// @param atMs of a clock that never goes back
    void add(qint64 bytes, qint64 atMs);

    /// 0 before there is a second to judge by.
    qint64 bytesPerSecond() const;

private:
    struct Size
    {
        qint64 bytes;
        qint64 atMs;
    };
    QList<Size> m_sizes;
};

} // namespace diskspace
