// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/input/native_windows.h"
#include "platform/xcb_handles.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QWindow>

#include <utility>
#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <cstring>
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
    bool isManaged(xcb_window_t window) const;
    std::vector<xcb_window_t> childrenOf(xcb_window_t window) const;
    xcb_window_t managedAbove(xcb_window_t window) const;
    xcb_window_t managedBelow(xcb_window_t window) const;
    std::vector<xcb_window_t> clients() const;
    bool isPartOfTheDesktop(xcb_window_t window) const;
    QByteArray propertyOf(xcb_window_t window, xcb_atom_t property) const;

    xcb::Connection connection;
    xcb_window_t root = XCB_WINDOW_NONE;
    /// Window managers set it on the windows of programs, and not on their own frames.
    xcb_atom_t managed = XCB_ATOM_NONE;
    xcb_atom_t utf8Name = XCB_ATOM_NONE;
    xcb_atom_t clientsStacking = XCB_ATOM_NONE;
    xcb_atom_t windowType = XCB_ATOM_NONE;
    xcb_atom_t windowState = XCB_ATOM_NONE;
    /// Types and states of what users do not take for a window.
    std::array<xcb_atom_t, 4> leftOut{};
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
    managed = xcb::atomNamed(connection.get(), "WM_STATE");
    utf8Name = xcb::atomNamed(connection.get(), "_NET_WM_NAME");
    clientsStacking = xcb::atomNamed(connection.get(), "_NET_CLIENT_LIST_STACKING");
    windowType = xcb::atomNamed(connection.get(), "_NET_WM_WINDOW_TYPE");
    windowState = xcb::atomNamed(connection.get(), "_NET_WM_STATE");
    leftOut = {xcb::atomNamed(connection.get(), "_NET_WM_WINDOW_TYPE_DESKTOP"),
               xcb::atomNamed(connection.get(), "_NET_WM_WINDOW_TYPE_DOCK"),
               xcb::atomNamed(connection.get(), "_NET_WM_STATE_HIDDEN"),
               xcb::atomNamed(connection.get(), "_NET_WM_STATE_SKIP_TASKBAR")};
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

bool NativeWindows::Private::isManaged(xcb_window_t window) const
{
    const auto reply = xcb::answer<xcb_get_property_reply>(
        connection.get(), xcb_get_property(connection.get(), 0, window, managed, XCB_GET_PROPERTY_TYPE_ANY, 0, 0));
    return reply && reply->type != XCB_ATOM_NONE;
}

std::vector<xcb_window_t> NativeWindows::Private::childrenOf(xcb_window_t window) const
{
    const auto tree = xcb::answer<xcb_query_tree_reply>(connection.get(), xcb_query_tree(connection.get(), window));
    if (!tree)
        return {};
    const xcb_window_t* const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

/// The window or its nearest ancestor that is one; none where the window manager's frame comes first.
xcb_window_t NativeWindows::Private::managedAbove(xcb_window_t window) const
{
    while (window != root && window != XCB_WINDOW_NONE && !isManaged(window)) {
        const auto tree = xcb::answer<xcb_query_tree_reply>(connection.get(), xcb_query_tree(connection.get(), window));
        window = tree ? tree->parent : xcb_window_t{XCB_WINDOW_NONE};
    }
    return window == root ? xcb_window_t{XCB_WINDOW_NONE} : window;
}

/// The one that is nearest to the window.
xcb_window_t NativeWindows::Private::managedBelow(xcb_window_t window) const
{
    std::vector<xcb_window_t> found = childrenOf(window);
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (isManaged(found[i]))
            return found[i];
        const std::vector<xcb_window_t> children = childrenOf(found[i]);
        found.insert(found.end(), children.begin(), children.end());
    }
    return XCB_WINDOW_NONE;
}

/// From the bottom to the top.
std::vector<xcb_window_t> NativeWindows::Private::clients() const
{
    constexpr std::uint32_t kMost = 4096;
    const auto reply = xcb::answer<xcb_get_property_reply>(
        connection.get(), xcb_get_property(connection.get(), 0, root, clientsStacking, XCB_ATOM_WINDOW, 0, kMost));
    // Nobody manages windows.
    if (!reply || reply->format != 32)
        return childrenOf(root);
    const auto* const first = static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
    return {first, first + xcb_get_property_value_length(reply.get()) / sizeof(xcb_window_t)};
}

/// Its background, a panel, or a window that no panel lists.
bool NativeWindows::Private::isPartOfTheDesktop(xcb_window_t window) const
{
    const QByteArray bytes = propertyOf(window, windowType) + propertyOf(window, windowState);
    std::vector<xcb_atom_t> atoms(static_cast<std::size_t>(bytes.size()) / sizeof(xcb_atom_t));
    std::memcpy(atoms.data(), bytes.constData(), atoms.size() * sizeof(xcb_atom_t));
    return std::ranges::find_first_of(atoms, leftOut) != atoms.end();
}

/// Its first 1024 bytes.
QByteArray NativeWindows::Private::propertyOf(xcb_window_t window, xcb_atom_t property) const
{
    constexpr std::uint32_t kWords = 256;
    const auto reply =
        xcb::answer<xcb_get_property_reply>(connection.get(), xcb_get_property(connection.get(), 0, window, property,
                                                                               XCB_GET_PROPERTY_TYPE_ANY, 0, kWords));
    if (!reply)
        return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), xcb_get_property_value_length(reply.get())};
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

std::vector<NativeWindow> NativeWindows::shown() const
{
    if (!m_private->isConnected())
        return {};
    const std::vector<xcb_window_t> clients = m_private->clients();
    std::vector<NativeWindow> windows(clients.rbegin(), clients.rend());
    std::erase_if(windows, [this](NativeWindow window) {
        return !isShown(window) || m_private->isPartOfTheDesktop(static_cast<xcb_window_t>(window));
    });
    return windows;
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

NativeWindow NativeWindows::topLevelOf(NativeWindow window) const
{
    const auto id = static_cast<xcb_window_t>(window);
    if (!m_private->isConnected() || id == m_private->root)
        return 0;
    const xcb_window_t above = m_private->managedAbove(id);
    if (above != XCB_WINDOW_NONE)
        return above;
    const xcb_window_t topmost = m_private->topLevelOf(id);
    const xcb_window_t below = m_private->managedBelow(topmost);
    return below != XCB_WINDOW_NONE ? below : topmost;
}

QString NativeWindows::titleOf(NativeWindow window) const
{
    if (!m_private->isConnected())
        return {};
    const auto id = static_cast<xcb_window_t>(window);
    const QByteArray name = m_private->propertyOf(id, m_private->utf8Name);
    return name.isEmpty() ? QString::fromLatin1(m_private->propertyOf(id, XCB_ATOM_WM_NAME)) : QString::fromUtf8(name);
}

bool NativeWindows::isShown(NativeWindow window) const
{
    if (!m_private->isConnected())
        return false;
    xcb_connection_t* const c = m_private->connection.get();
    const auto attributes = xcb::answer<xcb_get_window_attributes_reply>(
        c, xcb_get_window_attributes(c, static_cast<xcb_window_t>(window)));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace platform
