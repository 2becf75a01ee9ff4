// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/x11frames.h"

#include "app/sclogger.h"
#include "engine/capture/x11/pointermarks.h"
#include "engine/capture/x11/videoconversion.h"

#include <utility>

#include <cstring>

namespace {

constexpr int kBytesPerPixel = 4;

const std::uint8_t* pixelAt(const PixelView& image, const QPoint& position)
{
    return image.data + static_cast<std::ptrdiff_t>(position.y()) * image.strideBytes + kBytesPerPixel * position.x();
}

/// The frame from an even position on.
I420View from(const I420View& frame, const QPoint& position)
{
    I420View part = frame;
    part.planes[0] += static_cast<std::ptrdiff_t>(position.y()) * frame.stridesBytes[0] + position.x();
    for (const int plane : {1, 2})
        part.planes[plane] +=
            static_cast<std::ptrdiff_t>(position.y() / 2) * frame.stridesBytes[plane] + position.x() / 2;
    return part;
}

} // namespace

std::unique_ptr<FrameSource> X11Frames::open(const QRect& area, QString& obstacle, const char* display)
{
    auto connection = std::make_unique<X11Connection>(display);
    obstacle = connection->obstacle();
    if (!obstacle.isEmpty())
        return nullptr;
    return std::unique_ptr<FrameSource>(new X11Frames(std::move(connection), area));
}

X11Frames::X11Frames(std::unique_ptr<X11Connection> connection, const QRect& area)
    : m_connection(std::move(connection))
    , m_damage(*m_connection)
    , m_grabber(*m_connection)
    , m_cursor(*m_connection)
    , m_clicks(*m_connection)
    , m_stale(QRect(QPoint(0, 0), area.size()))
    , m_desktop(m_connection->desktop())
{
    m_grabber.setArea(area);
    m_missed = area;
}

void X11Frames::setOrigin(const QPoint& origin)
{
    if (origin == m_grabber.area().topLeft())
        return;
    m_grabber.setArea(QRect(origin, m_grabber.area().size()));
    m_missed = m_grabber.area();
}

void X11Frames::setPointer(const FramePointer& pointer)
{
    m_pointer = pointer;
    m_stale.add(m_drawnPointer.part);
    m_drawnPointer = {};
}

void X11Frames::update(std::uint64_t nowNs)
{
    readEvents(nowNs);
    const QRegion changed = takeChanges();
    m_missed = m_grabber.grab(changed) ? QRegion() : changed;
    m_stale.add(changed.translated(-m_grabber.area().topLeft()));
    followPointer(nowNs);
}

void X11Frames::readEvents(std::uint64_t nowNs)
{
    while (const auto event = m_connection->nextEvent()) {
        m_damage.handle(*event);
        m_cursor.handle(*event);
        m_clicks.handle(*event, static_cast<std::int64_t>(nowNs));
    }
}

QRegion X11Frames::takeChanges()
{
    const QRegion changed = m_damage.take() + m_missed;
    if (std::exchange(m_desktop, m_connection->desktop()) == m_connection->desktop())
        return changed & m_grabber.area();
    SCLogger::info(QStringLiteral("The desktop has become %1x%2; the recording goes on")
                       .arg(m_desktop.width())
                       .arg(m_desktop.height()));
    return m_grabber.area();
}

void X11Frames::followPointer(std::uint64_t nowNs)
{
    m_cursor.update();
    const DrawnPointer pointer = pointerToDraw(nowNs);
    if (pointer == m_drawnPointer)
        return;
    m_stale.add(QRegion(m_drawnPointer.part) + pointer.part);
    m_drawnPointer = pointer;
}

X11Frames::DrawnPointer X11Frames::pointerToDraw(std::uint64_t nowNs)
{
    if (!m_cursor.pointer())
        return {};
    platform::PointerState pointer = m_clicks.marked(*m_cursor.pointer(), static_cast<std::int64_t>(nowNs));
    pointer.positionPx -= m_grabber.area().topLeft();
    const QRect part = m_stale.evenPart(partOf(pointer));
    if (part.isEmpty())
        return {};
    return {part, pointer.positionPx, pointer.leftDown, pointer.rightDown, m_cursor.imageNumber()};
}

/// What the pointer and its circles cover, in pixels of the frame.
QRect X11Frames::partOf(const platform::PointerState& pointer) const
{
    QRect part;
    const CursorImage& image = m_cursor.image();
    if (m_pointer.isShown)
        part = QRect(pointer.positionPx - image.hotSpot, QSize(image.widthPx, image.heightPx));
    for (const PointerCircle& circle : m_pointer.effects.circlesAround(pointer, m_pointer.pixelRatio)) {
        const auto radius = static_cast<qreal>(circle.outerPx());
        part |= QRectF(circle.centrePx - QPointF(radius, radius), 2 * QSizeF(radius, radius)).toAlignedRect();
    }
    return part;
}

void X11Frames::write(const I420View& frame)
{
    const QRegion stale = m_stale.take(frame.planes[0]);
    for (const QRect& part : stale)
        convertToI420(m_grabber.image(), frame, part);
    if (stale.intersects(m_drawnPointer.part))
        writePointer(frame);
}

/// Over a copy: the grabbed image stays without it.
void X11Frames::writePointer(const I420View& frame)
{
    const QRect& part = m_drawnPointer.part;
    const int rowBytes = kBytesPerPixel * part.width();
    m_patch.resize(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(part.height()));
    for (int row = 0; row < part.height(); ++row)
        std::memcpy(m_patch.data() + static_cast<std::ptrdiff_t>(row) * rowBytes,
                    pixelAt(m_grabber.image(), part.topLeft() + QPoint(0, row)), static_cast<std::size_t>(rowBytes));
    const MutablePixelView patch{m_patch.data(), rowBytes, part.width(), part.height()};
    const platform::PointerState pointer{m_drawnPointer.position - part.topLeft(), m_drawnPointer.leftIsMarked,
                                         m_drawnPointer.rightIsMarked};
    if (m_pointer.isShown)
        blendCursor(patch, m_cursor.image(), pointer.positionPx);
    drawPointerCircles(patch, m_pointer.effects.circlesAround(pointer, m_pointer.pixelRatio));
    convertToI420({m_patch.data(), rowBytes, part.width(), part.height()}, from(frame, part.topLeft()),
                  QRect(QPoint(0, 0), part.size()));
}
