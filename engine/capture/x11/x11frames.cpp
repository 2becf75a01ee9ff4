// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/x11frames.h"

#include "app/sclogger.h"
#include "engine/capture/x11/pointermarks.h"
#include "engine/capture/x11/videoconversion.h"

#include <util/platform.h>
#include <utility>

#include <chrono>
#include <cstring>
#include <thread>

namespace {

constexpr int kBytesPerPixel = 4;
constexpr std::uint64_t kReopenIntervalNs = 1'000'000'000;

const std::uint8_t* pixelAt(const PixelView& image, const QPoint& position)
{
    return image.data + static_cast<std::ptrdiff_t>(position.y()) * image.strideBytes +
           static_cast<std::ptrdiff_t>(position.x()) * kBytesPerPixel;
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

X11Frames::Session::Session(std::unique_ptr<X11Connection> opened, const QRect& area)
    : connection(std::move(opened))
    , damage(*connection)
    , desktop(*connection, area)
    , cursor(*connection)
    , clicks(*connection)
    , desktopNumber(connection->desktopNumber())
{}

std::unique_ptr<X11Frames::Session> X11Frames::Session::open(const QByteArray& display, const QRect& area,
                                                             QString& obstacle)
{
    auto connection = std::make_unique<X11Connection>(display.isEmpty() ? nullptr : display.constData());
    obstacle = connection->obstacle();
    return obstacle.isEmpty() ? std::make_unique<Session>(std::move(connection), area) : nullptr;
}

std::unique_ptr<FrameSource> X11Frames::open(const QRect& area, QString& obstacle, const char* display)
{
    std::unique_ptr<Session> session = Session::open(display, area, obstacle);
    if (!session)
        return nullptr;
    if (session->desktop.prepare(os_gettime_ns()))
        std::this_thread::sleep_for(std::chrono::nanoseconds(WindowsBelow::kPaintNs));
    return std::unique_ptr<FrameSource>(new X11Frames(std::move(session), display));
}

X11Frames::X11Frames(std::unique_ptr<Session> session, const QByteArray& display)
    : m_display(display), m_session(std::move(session)), m_stale(QRect(QPoint(0, 0), area().size()))
{}

void X11Frames::setOrigin(const QPoint& origin)
{
    if (origin != area().topLeft())
        m_session->desktop.setArea(QRect(origin, area().size()));
}

void X11Frames::setPointer(const FramePointer& pointer)
{
    m_pointer = pointer;
    m_stale.add(m_drawnPointer.part);
    m_drawnPointer = {};
}

void X11Frames::update(std::uint64_t nowNs)
{
    // First: the reply comes after the events of what is on the screen by now.
    m_session->cursor.updatePointer();
    if (m_session->connection->isLost() && !reopen(nowNs))
        return;
    readEvents(nowNs);
    const QRegion changed = m_session->desktop.update(takeChanges(), nowNs);
    m_stale.add(changed.translated(-area().topLeft()));
    m_session->cursor.updateImage();
    followPointer(nowNs);
}

/// The first attempt that fails is not logged: where the X server itself has ended Qt ends the process, and exit
/// handlers run meanwhile.
bool X11Frames::reopen(std::uint64_t nowNs)
{
    if (nowNs < m_reopenNs)
        return false;
    m_reopenNs = nowNs + kReopenIntervalNs;
    QString obstacle;
    std::unique_ptr<Session> session = Session::open(m_display, area(), obstacle);
    if (!session) {
        if (++m_failedAttempts == 2)
            SCLogger::warning(QStringLiteral("The recorded video is frozen: %1").arg(obstacle));
        return false;
    }
    SCLogger::warning(QStringLiteral("The X server had closed the connection of the recording; it is open again"));
    m_failedAttempts = 0;
    m_session = std::move(session);
    m_session->cursor.updatePointer();
    return true;
}

void X11Frames::readEvents(std::uint64_t nowNs)
{
    while (const auto event = m_session->connection->nextEvent()) {
        m_session->damage.handle(*event);
        m_session->cursor.handle(*event);
        m_session->clicks.handle(*event, static_cast<std::int64_t>(nowNs));
    }
}

QRegion X11Frames::takeChanges()
{
    QRegion changed = m_session->damage.take();
    const X11Connection& connection = *m_session->connection;
    if (std::exchange(m_session->desktopNumber, connection.desktopNumber()) == connection.desktopNumber())
        return changed;
    m_session->desktop.forget();
    SCLogger::info(QStringLiteral("The screens have changed: the desktop is %1x%2 now; the recording goes on")
                       .arg(connection.desktop().width())
                       .arg(connection.desktop().height()));
    return changed;
}

void X11Frames::followPointer(std::uint64_t nowNs)
{
    const DrawnPointer pointer = pointerToDraw(nowNs);
    if (pointer == m_drawnPointer)
        return;
    m_stale.add(QRegion(m_drawnPointer.part) + pointer.part);
    m_drawnPointer = pointer;
}

X11Frames::DrawnPointer X11Frames::pointerToDraw(std::uint64_t nowNs)
{
    const CursorTracker& cursor = m_session->cursor;
    if (!cursor.pointer())
        return {};
    platform::PointerState pointer = m_session->clicks.marked(*cursor.pointer(), static_cast<std::int64_t>(nowNs));
    pointer.positionPx -= area().topLeft();
    const QRect part = m_stale.evenPart(partOf(pointer));
    if (part.isEmpty())
        return {};
    return {part, pointer.positionPx, pointer.leftDown, pointer.rightDown, cursor.imageNumber()};
}

/// What the pointer and its circles cover, in pixels of the frame.
QRect X11Frames::partOf(const platform::PointerState& pointer) const
{
    QRect part;
    const CursorImage& image = m_session->cursor.image();
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
        convertToI420(m_session->desktop.image(), frame, part);
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
                    pixelAt(m_session->desktop.image(), part.topLeft() + QPoint(0, row)),
                    static_cast<std::size_t>(rowBytes));
    const MutablePixelView patch{m_patch.data(), rowBytes, part.width(), part.height()};
    const platform::PointerState pointer{m_drawnPointer.position - part.topLeft(), m_drawnPointer.leftIsMarked,
                                         m_drawnPointer.rightIsMarked};
    if (m_pointer.isShown)
        blendCursor(patch, m_session->cursor.image(), pointer.positionPx);
    drawPointerCircles(patch, m_pointer.effects.circlesAround(pointer, m_pointer.pixelRatio));
    convertToI420({m_patch.data(), rowBytes, part.width(), part.height()}, from(frame, part.topLeft()),
                  QRect(QPoint(0, 0), part.size()));
}
