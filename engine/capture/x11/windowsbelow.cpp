// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/windowsbelow.h"

#include "engine/capture/x11/x11regions.h"

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <cstring>
#include <span>
#include <string>

using platform::xcb::answer;
using platform::xcb::atomNamed;

namespace {

constexpr int kBytesPerPixel = 4;
constexpr std::uint8_t kTranslucentDepth = 32;
constexpr std::uint32_t kAllPlanes = ~std::uint32_t{0};
constexpr std::uint32_t kColour = 0x00FFFFFF;
constexpr std::uint32_t kAlpha = 0xFF000000;

bool hasPixelsOfViews(const xcb_render_pictforminfo_t& format)
{
    const xcb_render_directformat_t& bits = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == kTranslucentDepth && bits.red_shift == 16 &&
           bits.red_mask == 0xFF && bits.green_shift == 8 && bits.green_mask == 0xFF && bits.blue_shift == 0 &&
           bits.blue_mask == 0xFF;
}

bool isOpaque(const std::uint8_t* pixel)
{
    std::uint32_t color = 0;
    std::memcpy(&color, pixel, sizeof color);
    return (color & kAlpha) == kAlpha;
}

/// @param rows without gaps
QRegion opaquePart(const std::uint8_t* rows, const QSize& size)
{
    QRegion part;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0, end = 0; x < size.width(); x = end) {
            const bool isRunOpaque = isOpaque(rows);
            for (end = x; end < size.width() && isOpaque(rows) == isRunOpaque; ++end)
                rows += kBytesPerPixel;
            if (isRunOpaque)
                part += QRect(x, y, end - x, 1);
        }
    }
    return part;
}

/// Copies the pixels that are opaque, the others are not known; whether one of them is another one now.
bool copyOpaque(std::uint8_t* to, const std::uint8_t* from, int count)
{
    bool isDifferent = false;
    for (int i = 0; i < count; ++i, to += kBytesPerPixel, from += kBytesPerPixel) {
        std::uint32_t drawn = 0;
        std::uint32_t present = 0;
        std::memcpy(&drawn, from, sizeof drawn);
        std::memcpy(&present, to, sizeof present);
        if ((drawn & kAlpha) != kAlpha || ((drawn ^ present) & kColour) == 0)
            continue;
        std::memcpy(to, &drawn, sizeof drawn);
        isDifferent = true;
    }
    return isDifferent;
}

/// @param rows without gaps
bool copyOpaque(const MutablePixelView& onto, const QRect& part, const std::uint8_t* rows)
{
    const auto rowBytes = static_cast<std::ptrdiff_t>(kBytesPerPixel) * part.width();
    std::uint8_t* to = onto.data + static_cast<std::ptrdiff_t>(part.y()) * onto.strideBytes +
                       static_cast<std::ptrdiff_t>(kBytesPerPixel) * part.x();
    bool isDifferent = false;
    for (int row = 0; row < part.height(); ++row, to += onto.strideBytes, rows += rowBytes)
        isDifferent = copyOpaque(to, rows, part.width()) || isDifferent;
    return isDifferent;
}

} // namespace

WindowsBelow::WindowsBelow(const X11Connection& connection) : m_connection(connection)
{
    if (!connection.hasComposite())
        return;
    queryFormats();
    m_backgroundAtom = atomNamed(connection.get(), "_XROOTPMAP_ID");
    m_compositorAtom = atomNamed(connection.get(), "_NET_WM_CM_S" + std::to_string(connection.screenNumber()));
    for (std::uint32_t* const id : {&m_canvasPixmap, &m_canvas, &m_pixmap, &m_picture, &m_clip, &m_cut})
        *id = xcb_generate_id(connection.get());
}

void WindowsBelow::queryFormats()
{
    const auto reply = answer<xcb_render_query_pict_formats_reply>(m_connection.get(),
                                                                   xcb_render_query_pict_formats(m_connection.get()));
    if (!reply)
        return;
    std::map<xcb_render_pictformat_t, int> depths;
    for (auto format = xcb_render_query_pict_formats_formats_iterator(reply.get()); format.rem > 0;
         xcb_render_pictforminfo_next(&format)) {
        depths[format.data->id] = format.data->depth;
        if (hasPixelsOfViews(*format.data))
            (format.data->direct.alpha_mask != 0 ? m_translucent : m_opaque) = format.data->id;
    }
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(reply.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem > 0;
                 xcb_render_pictvisual_next(&visual))
                m_formats[visual.data->visual] = {visual.data->format, depths[visual.data->format]};
        }
    }
}

/// Where nothing mixes windows the screen shows the colours of translucent ones as they are.
xcb_render_pictformat_t WindowsBelow::formatOf(xcb_visualid_t visual, bool isMixed) const
{
    const auto found = m_formats.find(visual);
    if (found == m_formats.end())
        return XCB_NONE;
    const bool isOpaque = found->second.depth == kTranslucentDepth && !isMixed && m_opaque != XCB_NONE;
    return isOpaque ? m_opaque : found->second.id;
}

void WindowsBelow::require(std::uint64_t nowNs)
{
    if (m_translucent == XCB_NONE)
        return;
    m_requiredNs = nowNs;
    if (m_sinceNs)
        return;
    // Any number of clients may ask for this, beside the one that draws the screen itself.
    xcb_composite_redirect_subwindows(m_connection.get(), m_connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(m_connection.get());
    m_sinceNs = nowNs;
}

void WindowsBelow::rest(std::uint64_t nowNs)
{
    if (!m_sinceNs || nowNs - m_requiredNs <= kKeepNs)
        return;
    xcb_composite_unredirect_subwindows(m_connection.get(), m_connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(m_connection.get());
    m_sinceNs.reset();
}

QRegion WindowsBelow::draw(const QRegion& parts, const ExcludedAreas& excluded, const MutablePixelView& onto,
                           const QPoint& origin, QRegion& unseen)
{
    const QRect bounds = parts.boundingRect();
    const Desktop desktop = queryDesktop(bounds, excluded);
    prepareCanvas(bounds.size());
    drawBackground(desktop.background, bounds);
    for (const Window& window : desktop.windows)
        drawWindow(window, excluded.excludedPartOf(window.id), desktop.isMixed, bounds.topLeft());
    std::vector<xcb_get_image_cookie_t> cookies;
    for (const QRect& part : parts) {
        const xcb_rectangle_t onCanvas = x11regions::fromRect(part.translated(-bounds.topLeft()));
        cookies.push_back(xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_canvasPixmap, onCanvas.x,
                                        onCanvas.y, onCanvas.width, onCanvas.height, kAllPlanes));
    }
    QRegion changed;
    auto cookie = cookies.begin();
    for (const QRect& part : parts) {
        const auto reply = answer<xcb_get_image_reply>(m_connection.get(), *cookie++);
        const auto expected = static_cast<std::ptrdiff_t>(kBytesPerPixel) * part.width() * part.height();
        if (!reply || xcb_get_image_data_length(reply.get()) < expected)
            continue;
        const std::uint8_t* const rows = xcb_get_image_data(reply.get());
        if (copyOpaque(onto, part.translated(-origin), rows))
            changed += part;
        if (unseen.intersects(part))
            unseen -= opaquePart(rows, part.size()).translated(part.topLeft());
    }
    return changed;
}

WindowsBelow::Desktop WindowsBelow::queryDesktop(const QRect& bounds, const ExcludedAreas& excluded) const
{
    xcb_connection_t* const connection = m_connection.get();
    const auto treeCookie = xcb_query_tree(connection, m_connection.root());
    const auto backgroundCookie =
        xcb_get_property(connection, 0, m_connection.root(), m_backgroundAtom, XCB_ATOM_PIXMAP, 0, 1);
    const auto compositorCookie = xcb_get_selection_owner(connection, m_compositorAtom);
    const auto tree = answer<xcb_query_tree_reply>(connection, treeCookie);
    const auto background = answer<xcb_get_property_reply>(connection, backgroundCookie);
    const auto compositor = answer<xcb_get_selection_owner_reply>(connection, compositorCookie);
    Desktop desktop;
    if (background && background->format == 32 && background->value_len == 1)
        std::memcpy(&desktop.background, xcb_get_property_value(background.get()), sizeof desktop.background);
    desktop.isMixed = compositor && compositor->owner != XCB_WINDOW_NONE;
    if (!tree)
        return desktop;
    std::vector<xcb_window_t> others;
    for (const xcb_window_t id :
         std::span(xcb_query_tree_children(tree.get()), static_cast<std::size_t>(tree->children_len))) {
        if (!excluded.isExcluded(id))
            others.push_back(id);
    }
    desktop.windows = windowsAmong(others, bounds);
    return desktop;
}

/// Those that are shown there.
std::vector<WindowsBelow::Window> WindowsBelow::windowsAmong(const std::vector<xcb_window_t>& ids,
                                                             const QRect& bounds) const
{
    xcb_connection_t* const connection = m_connection.get();
    struct Question
    {
        xcb_window_t id;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
    };
    std::vector<Question> questions;
    questions.reserve(ids.size());
    for (const xcb_window_t id : ids)
        questions.push_back({id, xcb_get_window_attributes(connection, id), xcb_get_geometry(connection, id)});
    std::vector<Window> windows;
    for (const Question& question : questions) {
        const auto attributes = answer<xcb_get_window_attributes_reply>(connection, question.attributes);
        const auto geometry = answer<xcb_get_geometry_reply>(connection, question.geometry);
        if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        const QRect area = x11regions::withBorder(*geometry);
        if (area.intersects(bounds))
            windows.push_back({question.id, area, geometry->border_width, attributes->visual});
    }
    return windows;
}

void WindowsBelow::prepareCanvas(const QSize& size)
{
    xcb_connection_t* const connection = m_connection.get();
    const QSize needed = size.expandedTo(m_canvasSize);
    if (needed != m_canvasSize) {
        if (!m_canvasSize.isEmpty()) {
            xcb_render_free_picture(connection, m_canvas);
            xcb_free_pixmap(connection, m_canvasPixmap);
        }
        m_canvasSize = needed;
        xcb_create_pixmap(connection, kTranslucentDepth, m_canvasPixmap, m_connection.root(),
                          static_cast<std::uint16_t>(needed.width()), static_cast<std::uint16_t>(needed.height()));
        xcb_render_create_picture(connection, m_canvas, m_canvasPixmap, m_translucent, 0, nullptr);
    }
    xcb_xfixes_set_picture_clip_region(connection, m_canvas, XCB_NONE, 0, 0);
    const xcb_rectangle_t whole = x11regions::fromRect(QRect(QPoint(0, 0), m_canvasSize));
    xcb_render_fill_rectangles(connection, XCB_RENDER_PICT_OP_SRC, m_canvas, {0, 0, 0, 0}, 1, &whole);
}

/// A program that has set it may have taken it along; the request fails then.
void WindowsBelow::drawBackground(xcb_pixmap_t background, const QRect& bounds)
{
    if (background == XCB_NONE)
        return;
    xcb_connection_t* const connection = m_connection.get();
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    xcb_render_create_picture(connection, m_picture, background, formatOf(m_connection.rootVisual(), true),
                              XCB_RENDER_CP_REPEAT, &repeat);
    const xcb_rectangle_t part = x11regions::fromRect(bounds);
    xcb_render_composite(connection, XCB_RENDER_PICT_OP_SRC, m_picture, XCB_NONE, m_canvas, part.x, part.y, 0, 0, 0, 0,
                         part.width, part.height);
    xcb_render_free_picture(connection, m_picture);
}

/// Of a window that goes meanwhile, and of one that the server keeps no image of, nothing is drawn: the requests fail,
/// and their errors are events that nobody handles.
void WindowsBelow::drawWindow(const Window& window, const QRegion& excluded, bool isMixed, const QPoint& origin)
{
    xcb_connection_t* const connection = m_connection.get();
    const QPoint inside = window.area.topLeft() + QPoint(window.borderPx, window.borderPx);
    xcb_xfixes_create_region_from_window(connection, m_clip, window.id, XCB_SHAPE_SK_BOUNDING);
    if (!excluded.isEmpty()) {
        std::vector<xcb_rectangle_t> rectangles;
        for (const QRect& part : excluded.translated(-inside))
            rectangles.push_back(x11regions::fromRect(part));
        xcb_xfixes_create_region(connection, m_cut, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
        xcb_xfixes_subtract_region(connection, m_clip, m_cut, m_clip);
        xcb_xfixes_destroy_region(connection, m_cut);
    }
    const xcb_rectangle_t clip = x11regions::fromRect(QRect(inside - origin, QSize(1, 1)));
    const xcb_rectangle_t area = x11regions::fromRect(window.area.translated(-origin));
    xcb_xfixes_set_picture_clip_region(connection, m_canvas, m_clip, clip.x, clip.y);
    xcb_xfixes_destroy_region(connection, m_clip);
    xcb_composite_name_window_pixmap(connection, window.id, m_pixmap);
    xcb_render_create_picture(connection, m_picture, m_pixmap, formatOf(window.visual, isMixed), 0, nullptr);
    xcb_render_composite(connection, XCB_RENDER_PICT_OP_OVER, m_picture, XCB_NONE, m_canvas, 0, 0, 0, 0, area.x, area.y,
                         area.width, area.height);
    xcb_render_free_picture(connection, m_picture);
    xcb_free_pixmap(connection, m_pixmap);
}
