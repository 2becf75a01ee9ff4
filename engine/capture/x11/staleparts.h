// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegion>

#include <cstdint>
#include <map>

/// What each buffer lacks of the present frame, where frames are written to a few buffers in turn: all that has changed
/// since it was written last. Belongs to one thread.
class StaleParts
{
public:
    /// @param whole the frame
    explicit StaleParts(const QRect& whole) : m_whole(whole) {}

    /// Parts grow to even edges, because a chroma sample covers two by two pixels.
    void add(const QRegion& changed);
    /// What a buffer lacks, which has everything from now on. Of one that was not seen before that is the whole frame.
    QRegion take(const std::uint8_t* buffer);

    /// A part with even edges, as far as it is in the frame.
    QRect evenPart(const QRect& part) const;

private:
    const QRect m_whole;
    std::map<const std::uint8_t*, QRegion> m_buffers;
};
