// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/screengrabber.h"

#include "app/sclogger.h"
#include "engine/capture/x11/x11regions.h"

#include <algorithm>
#include <cstring>

using platform::xcb::Owned;

namespace {

constexpr std::size_t kBytesPerPixel = 4;
/// One after the other, while the desktop keeps its size.
constexpr int kMaxMemoryFailures = 3;
constexpr std::uint32_t kAllPlanes = ~std::uint32_t{0};

std::size_t rowBytes(const QRect& area)
{
    return kBytesPerPixel * static_cast<std::size_t>(area.width());
}

std::size_t bytesOf(const QRect& area)
{
    return rowBytes(area) * static_cast<std::size_t>(area.height());
}

} // namespace

void ScreenGrabber::setArea(const QRect& area)
{
    m_area = area;
    makeMemory();
    clip();
}

void ScreenGrabber::makeMemory()
{
    const std::size_t needed = m_copies.size() * bytesOf(m_area);
    if (m_memory && m_memory->bytes() < needed)
        m_memory.reset();
    if (m_memory || !m_canShare)
        return;
    m_memory = SharedMemory::make(m_connection, needed);
    // Not tried again each time that the region moves.
    m_canShare = m_memory != nullptr;
}

void ScreenGrabber::clip()
{
    m_visible = m_area & m_connection.desktop();
    m_lacking = m_area;
    m_isFormerKept = false;
    for (const int number : {0, 1}) {
        if (!isGrabbedInPlace())
            m_copies.at(static_cast<std::size_t>(number)).resize(bytesOf(m_area));
        if (m_visible != m_area)
            std::memset(imageData(number), 0, bytesOf(m_area));
    }
}

bool ScreenGrabber::grab(const QRegion& changed, Former former)
{
    QRegion wanted = changed & m_visible;
    if (m_visible != (m_area & m_connection.desktop())) {
        clip();
        wanted = m_visible;
    }
    m_isFormerKept = former == Former::IsKept && !wanted.isEmpty();
    if (m_isFormerKept)
        m_image = 1 - m_image;
    const bool isComplete = grabWanted(m_isFormerKept ? wanted + (m_lacking & m_visible) : wanted);
    if (m_isFormerKept && !isComplete)
        m_image = 1 - m_image;
    m_isFormerKept = m_isFormerKept && isComplete;
    m_lacking = m_isFormerKept ? wanted : m_lacking + wanted;
    if (m_lacking.rectCount() > x11regions::kMaxRectangles)
        m_lacking = m_lacking.boundingRect();
    return isComplete;
}

bool ScreenGrabber::grabWanted(const QRegion& wanted)
{
    if (grabBands(bandsOf(wanted)))
        return true;
    noteFailure();
    if (m_memoryFailures < kMaxMemoryFailures)
        return false;
    dropMemory();
    return grabBands(bandsOf(wanted));
}

bool ScreenGrabber::grabBands(const std::vector<Band>& bands)
{
    if (!m_memory)
        return std::all_of(bands.begin(), bands.end(), [this](const Band& band) { return grabPlain(band); });
    const bool isComplete = grabShared(bands);
    if (isComplete)
        m_memoryFailures = 0;
    return isComplete;
}

void ScreenGrabber::noteFailure()
{
    // Most likely the desktop has become smaller.
    const QRect before = m_connection.desktop();
    m_connection.updateDesktop();
    if (m_memory && !m_connection.isLost() && m_connection.desktop() == before)
        ++m_memoryFailures;
}

/// The images stay what they are.
void ScreenGrabber::dropMemory()
{
    SCLogger::warning(QStringLiteral("The X server cannot write into shared memory; it sends the pixels instead"));
    if (isGrabbedInPlace()) {
        for (const int number : {0, 1})
            m_copies.at(static_cast<std::size_t>(number))
                .assign(imageData(number), imageData(number) + bytesOf(m_area));
    }
    m_memory.reset();
    m_canShare = false;
    m_memoryFailures = 0;
}

/// Whole rows, because only those lie in the image as the server writes them. Few requests cost less than a few rows.
std::vector<ScreenGrabber::Band> ScreenGrabber::bandsOf(const QRegion& changed) const
{
    constexpr int kMaxGap = 16;
    std::vector<Band> bands;
    for (const QRect& rectangle : changed) {
        const int top = rectangle.top() - m_visible.top();
        const int end = top + rectangle.height();
        if (!bands.empty() && top <= bands.back().end + kMaxGap)
            bands.back().end = std::max(bands.back().end, end);
        else
            bands.push_back({top, end});
    }
    return bands;
}

bool ScreenGrabber::grabShared(const std::vector<Band>& bands)
{
    const int firstRow = isGrabbedInPlace() ? m_visible.top() - m_area.top() + m_image * m_area.height() : 0;
    std::vector<xcb_shm_get_image_cookie_t> cookies;
    for (const Band& band : bands) {
        const std::size_t offset = static_cast<std::size_t>(firstRow + band.top) * rowBytes(m_visible);
        cookies.push_back(xcb_shm_get_image(
            m_connection.get(), m_connection.root(), static_cast<std::int16_t>(m_visible.x()),
            static_cast<std::int16_t>(m_visible.y() + band.top), static_cast<std::uint16_t>(m_visible.width()),
            static_cast<std::uint16_t>(band.end - band.top), kAllPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP, m_memory->id(),
            static_cast<std::uint32_t>(offset)));
    }
    bool isComplete = true;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        const Owned<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(m_connection.get(), cookies.at(i), nullptr));
        isComplete = isComplete && reply;
        if (reply && !isGrabbedInPlace())
            copyToImage(bands.at(i),
                        m_memory->data() + static_cast<std::size_t>(bands.at(i).top) * rowBytes(m_visible));
    }
    return isComplete;
}

bool ScreenGrabber::grabPlain(const Band& band)
{
    const auto cookie = xcb_get_image(
        m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection.root(), static_cast<std::int16_t>(m_visible.x()),
        static_cast<std::int16_t>(m_visible.y() + band.top), static_cast<std::uint16_t>(m_visible.width()),
        static_cast<std::uint16_t>(band.end - band.top), kAllPlanes);
    const Owned<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
    const std::size_t expected = rowBytes(m_visible) * static_cast<std::size_t>(band.end - band.top);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < expected)
        return false;
    copyToImage(band, xcb_get_image_data(reply.get()));
    return true;
}

void ScreenGrabber::copyToImage(const Band& band, const std::uint8_t* rows)
{
    const QPoint origin = m_visible.topLeft() - m_area.topLeft();
    for (int row = band.top; row < band.end; ++row, rows += rowBytes(m_visible))
        std::memcpy(imageRow(origin.y() + row) + kBytesPerPixel * static_cast<std::size_t>(origin.x()), rows,
                    rowBytes(m_visible));
}

std::uint8_t* ScreenGrabber::imageData(int number)
{
    return isGrabbedInPlace() ? m_memory->data() + static_cast<std::size_t>(number) * bytesOf(m_area)
                              : m_copies.at(static_cast<std::size_t>(number)).data();
}

std::uint8_t* ScreenGrabber::imageRow(int row)
{
    return imageData(m_image) + static_cast<std::size_t>(row) * rowBytes(m_area);
}

std::size_t ScreenGrabber::offsetOf(const QRect& part, int y) const
{
    return static_cast<std::size_t>(y - m_area.top()) * rowBytes(m_area) +
           kBytesPerPixel * static_cast<std::size_t>(part.left() - m_area.left());
}

void ScreenGrabber::takeBack(const QRegion& part)
{
    if (!m_isFormerKept)
        return;
    for (const QRect& rectangle : part& m_area) {
        for (int y = rectangle.top(); y <= rectangle.bottom(); ++y)
            std::memcpy(imageData(m_image) + offsetOf(rectangle, y), imageData(1 - m_image) + offsetOf(rectangle, y),
                        rowBytes(rectangle));
    }
}

void ScreenGrabber::blacken(const QRegion& part)
{
    for (const QRect& rectangle : part& m_area) {
        for (int y = rectangle.top(); y <= rectangle.bottom(); ++y)
            std::memset(imageData(m_image) + offsetOf(rectangle, y), 0, rowBytes(rectangle));
    }
}

MutablePixelView ScreenGrabber::pixels()
{
    return {imageData(m_image), static_cast<int>(rowBytes(m_area)), m_area.width(), m_area.height()};
}

PixelView ScreenGrabber::image() const
{
    const std::uint8_t* const data = isGrabbedInPlace()
                                         ? m_memory->data() + static_cast<std::size_t>(m_image) * bytesOf(m_area)
                                         : m_copies.at(static_cast<std::size_t>(m_image)).data();
    return {data, static_cast<int>(rowBytes(m_area)), m_area.width(), m_area.height()};
}
