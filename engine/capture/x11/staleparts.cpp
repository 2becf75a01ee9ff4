// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/staleparts.h"

#include <utility>

namespace {

/// With more rectangles than this the box around them is cheaper.
constexpr int kMaxRectangles = 64;

} // namespace

QRect StaleParts::evenPart(const QRect& part) const
{
    if (part.isEmpty())
        return {};
    return m_whole & QRect(QPoint(part.left() & ~1, part.top() & ~1), QPoint(part.right() | 1, part.bottom() | 1));
}

void StaleParts::add(const QRegion& changed)
{
    QRegion parts;
    for (const QRect& part : changed)
        parts += evenPart(part);
    for (auto& [buffer, stale] : m_buffers) {
        stale += parts;
        if (stale.rectCount() > kMaxRectangles)
            stale = stale.boundingRect();
    }
}

QRegion StaleParts::take(const std::uint8_t* buffer)
{
    return std::exchange(m_buffers.try_emplace(buffer, m_whole).first->second, QRegion());
}
