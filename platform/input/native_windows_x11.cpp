// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/native_windows.h"
#include "platform/xcb_handles.h"

#include <QGuiApplication>
#include <QWindow>

#include <utility>
#include <xcb/shape.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <tuple>
#include <vector>

namespace platform {

namespace {

QPoint cornerOf(const xcb_get_geometry_reply_t& geometry)
{
    return {geometry.x, geometry.y};
}

QSize sizeWithBorder(const xcb_get_geometry_reply_t& geometry)
{
    return {geometry.width + 2 * geometry.border_width, geometry.height + 2 * geometry.border_width};
}

/// Where the window's own coordinates begin, in its parent's.
QPoint originOf(const xcb_get_geometry_reply_t& geometry)
{
    return cornerOf(geometry) + QPoint(geometry.border_width, geometry.border_width);
}

} // namespace

/// On a connection of its own, where a window that is gone is an answer that fails and nobody's error handler runs.
struct NativeWindows::Private
{
    Private();

    bool isConnected() const { return connection && xcb_connection_has_error(connection.get()) == 0; }
    std::optional<std::pair<xcb_window_t, QPoint>> topmostChildAt(xcb_window_t parent, const QPoint& position) const;
    bool isShapedToHold(xcb_window_t window, const QPoint& position, xcb_shape_sk_t kind) const;
    xcb::Owned<xcb_get_geometry_reply_t> geometryOf(xcb_window_t window) const;
    xcb_window_t topLevelOf(xcb_window_t window) const;

    xcb::Connection connection;
    xcb_window_t root = XCB_WINDOW_NONE;
};

NativeWindows::Private::Private()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    int screenNumber = 0;
    connection.reset(xcb_connect(nullptr, &screenNumber));
    if (!isConnected())
        return;
    root = xcb::screenNumbered(connection.get(), screenNumber).root;
}

/// The child with what position is in its coordinates; position is in the parent's.
std::optional<std::pair<xcb_window_t, QPoint>> NativeWindows::Private::topmostChildAt(xcb_window_t parent,
                                                                                      const QPoint& position) const
{
    xcb_connection_t* const c = connection.get();
    const auto tree = xcb::answer<xcb_query_tree_reply>(c, xcb_query_tree(c, parent));
    if (!tree)
        return std::nullopt;
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    // Ask about all of them, then listen: a desktop may have hundreds.
    std::vector<std::pair<xcb_get_window_attributes_cookie_t, xcb_get_geometry_cookie_t>> questions;
    questions.reserve(children.size());
    std::ranges::transform(children, std::back_inserter(questions), [c](xcb_window_t child) {
        return std::pair(xcb_get_window_attributes(c, child), xcb_get_geometry(c, child));
    });
    std::optional<std::pair<xcb_window_t, QPoint>> found;
    // The last child is the topmost; every answer is taken, or xcb would keep it.
    for (std::size_t i = children.size(); i-- > 0;) {
        const auto attributes = xcb::answer<xcb_get_window_attributes_reply>(c, questions[i].first);
        const auto geometry = xcb::answer<xcb_get_geometry_reply>(c, questions[i].second);
        if (found || !attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        const QPoint inside = position - originOf(*geometry);
        if (QRect(cornerOf(*geometry), sizeWithBorder(*geometry)).contains(position) &&
            isShapedToHold(children[i], inside, XCB_SHAPE_SK_BOUNDING) &&
            isShapedToHold(children[i], inside, XCB_SHAPE_SK_INPUT))
            found.emplace(children[i], inside);
    }
    return found;
}

bool NativeWindows::Private::isShapedToHold(xcb_window_t window, const QPoint& position, xcb_shape_sk_t kind) const
{
    const auto reply = xcb::answer<xcb_shape_get_rectangles_reply>(
        connection.get(), xcb_shape_get_rectangles(connection.get(), window, kind));
    if (!reply)
        return false;
    const std::span rectangles(xcb_shape_get_rectangles_rectangles(reply.get()),
                               static_cast<std::size_t>(xcb_shape_get_rectangles_rectangles_length(reply.get())));
    return std::ranges::any_of(rectangles, [&position](const xcb_rectangle_t& rectangle) {
        return QRect(rectangle.x, rectangle.y, rectangle.width, rectangle.height).contains(position);
    });
}

xcb::Owned<xcb_get_geometry_reply_t> NativeWindows::Private::geometryOf(xcb_window_t window) const
{
    return xcb::answer<xcb_get_geometry_reply>(connection.get(), xcb_get_geometry(connection.get(), window));
}

/// The ancestor below the root window: a frame, where the window manager makes frames.
xcb_window_t NativeWindows::Private::topLevelOf(xcb_window_t window) const
{
    xcb_window_t topLevel = window;
    while (const auto tree =
               xcb::answer<xcb_query_tree_reply>(connection.get(), xcb_query_tree(connection.get(), topLevel))) {
        if (tree->parent == root || tree->parent == XCB_WINDOW_NONE)
            break;
        topLevel = tree->parent;
    }
    return topLevel;
}

NativeWindows::NativeWindows() : m_private(std::make_unique<Private>()) {}

NativeWindows::~NativeWindows() = default;

NativeWindow NativeWindows::at(const QPoint& position) const
{
    if (!m_private->isConnected())
        return 0;
    xcb_window_t deepest = m_private->root;
    QPoint inside = position;
    while (const auto child = m_private->topmostChildAt(deepest, inside))
        std::tie(deepest, inside) = *child;
    return deepest;
}

bool NativeWindows::exists(NativeWindow window) const
{
    return m_private->isConnected() && m_private->geometryOf(static_cast<xcb_window_t>(window));
}

bool NativeWindows::isOwn(NativeWindow window) const
{
    if (!m_private->isConnected())
        return false;
    const xcb_window_t topLevel = m_private->topLevelOf(static_cast<xcb_window_t>(window));
    return std::ranges::any_of(QGuiApplication::allWindows(), [this, topLevel](const QWindow* own) {
        return own->handle() != nullptr && m_private->topLevelOf(static_cast<xcb_window_t>(own->winId())) == topLevel;
    });
}

std::optional<QRect> NativeWindows::rectOf(NativeWindow window) const
{
    if (!m_private->isConnected())
        return std::nullopt;
    const auto id = static_cast<xcb_window_t>(window);
    const auto geometry = m_private->geometryOf(id);
    xcb_connection_t* const c = m_private->connection.get();
    const auto origin =
        xcb::answer<xcb_translate_coordinates_reply>(c, xcb_translate_coordinates(c, id, m_private->root, 0, 0));
    if (!geometry || !origin)
        return std::nullopt;
    const QPoint border(geometry->border_width, geometry->border_width);
    return QRect(QPoint(origin->dst_x, origin->dst_y) - border, sizeWithBorder(*geometry));
}

} // namespace platform
