// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/stillimage.h"

#include "platform/xcb_handles.h"

#include <algorithm>
#include <array>

using platform::xcb::atomNamed;
using platform::xcb::Connection;
using platform::xcb::Owned;

namespace {

xcb_screen_t* screenOf(const Connection& connection)
{
    return xcb_connection_has_error(connection.get()) == 0
               ? xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data
               : nullptr;
}

/// The image in the server's memory. It goes over in stripes that are below the longest request of any server.
xcb_pixmap_t upload(xcb_connection_t* connection, const xcb_screen_t& screen, const QImage& image)
{
    constexpr int kStripePx = 16;
    const auto width = static_cast<uint16_t>(image.width());
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    const xcb_gcontext_t gc = xcb_generate_id(connection);
    xcb_create_pixmap(connection, screen.root_depth, pixmap, screen.root, width, static_cast<uint16_t>(image.height()));
    xcb_create_gc(connection, gc, pixmap, 0, nullptr);
    for (int top = 0; top < image.height(); top += kStripePx) {
        const int height = std::min(kStripePx, image.height() - top);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, gc, width, static_cast<uint16_t>(height), 0,
                      static_cast<int16_t>(top), 0, screen.root_depth,
                      static_cast<uint32_t>(image.bytesPerLine() * height), image.constScanLine(top));
    }
    xcb_free_gc(connection, gc);
    return pixmap;
}

/// The mean difference of an image's area from the grid, whose pixel (0, 0) of the image is the one at the origin.
double meanDifference(const QImage& image, const QRect& area, const QImage& grid, const QPoint& origin)
{
    qint64 sum = 0;
    qint64 count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QPoint position = origin + QPoint(x, y);
            if (!grid.rect().contains(position))
                continue;
            sum += std::abs(qGray(image.pixel(x, y)) - qGray(grid.pixel(position)));
            ++count;
        }
    }
    return count > 0 ? static_cast<double>(sum) / static_cast<double>(count) : 255.0;
}

} // namespace

struct StillImage::Private
{
    Connection connection{xcb_connect(nullptr, nullptr)};
    bool isShown = false;
};

StillImage::StillImage(const QImage& image) : m_private(std::make_unique<Private>())
{
    xcb_connection_t* const connection = m_private->connection.get();
    const xcb_screen_t* const screen = screenOf(m_private->connection);
    if (screen == nullptr)
        return;
    const xcb_pixmap_t pixmap = upload(connection, *screen, image.convertToFormat(QImage::Format_RGB32));
    const xcb_window_t window = xcb_generate_id(connection);
    const std::array<uint32_t, 1> background{pixmap};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, screen->width_in_pixels,
                      screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXMAP, background.data());
    xcb_free_pixmap(connection, pixmap);
    const xcb_atom_t type = atomNamed(connection, "_NET_WM_WINDOW_TYPE_DESKTOP");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atomNamed(connection, "_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &type);
    // Window managers put it on one of several screens unless the user himself has placed it, which is the first flag.
    const std::array<uint32_t, 18> sizeHints{1};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32,
                        static_cast<uint32_t>(sizeHints.size()), sizeHints.data());
    const xcb_void_cookie_t mapped = xcb_map_window_checked(connection, window);
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection, mapped));
    m_private->isShown = error == nullptr && xcb_connection_has_error(connection) == 0;
}

StillImage::~StillImage() = default;

bool StillImage::isShown() const
{
    return m_private->isShown;
}

QSize StillImage::displaySize()
{
    const Connection connection(xcb_connect(nullptr, nullptr));
    const xcb_screen_t* const screen = screenOf(connection);
    return screen != nullptr ? QSize(screen->width_in_pixels, screen->height_in_pixels) : QSize();
}

QImage gridImage(const QSize& size)
{
    constexpr int kLineEveryPx = 8;
    constexpr int kLine = 210;
    constexpr int kDarkest = 30;
    constexpr int kGreys = 12;
    constexpr int kGreyStep = 11;
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const bool isLine = x % kLineEveryPx == 0 || y % kLineEveryPx == 0;
            const int column = x / kLineEveryPx;
            const int row = y / kLineEveryPx;
            // Primes: no cell is like its neighbours, and the order does not repeat soon.
            const int grey = kDarkest + (column * 31 + row * 57 + column * row * 7) % kGreys * kGreyStep;
            const int value = isLine ? kLine : grey;
            image.setPixel(x, y, qRgb(value, value, value));
        }
    }
    return image;
}

QString differenceFromGrid(const QImage& image, const QRect& part, const QImage& grid)
{
    constexpr double kCodecError = 8.0;
    constexpr double kCodecErrorAtEdge = 14.0;
    if (image.size() != part.size())
        return QStringLiteral("%1x%2 pixels instead of %3x%4")
            .arg(image.width())
            .arg(image.height())
            .arg(part.width())
            .arg(part.height());
    const QRect all = image.rect();
    const double whole = meanDifference(image, all, grid, part.topLeft());
    if (whole > kCodecError)
        return QStringLiteral("%1 off in the mean").arg(whole);
    // The image is nowhere else as like as here.
    for (const QPoint& shift : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)}) {
        if (meanDifference(image, all, grid, part.topLeft() + shift) < 2 * whole)
            return QStringLiteral("as like as one that is moved by (%1, %2)").arg(shift.x()).arg(shift.y());
    }
    const QRect top(all.topLeft(), QSize(all.width(), 1));
    const QRect left(all.topLeft(), QSize(1, all.height()));
    for (const QRect& edge : {top, left, top.translated(0, all.height() - 1), left.translated(all.width() - 1, 0)}) {
        const double off = meanDifference(image, edge, grid, part.topLeft());
        if (off > kCodecErrorAtEdge)
            return QStringLiteral("the edge at (%1, %2) is %3 off").arg(edge.x()).arg(edge.y()).arg(off);
    }
    return {};
}
