// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/excludedareas.h"

#include "engine/capture/x11/x11regions.h"

#include <xcb/shape.h>

#include <algorithm>

using platform::ExcludedWindow;
using platform::ExcludedWindows;
using platform::xcb::answer;

namespace {

/// @param shape null means all of the window
QRegion regionOf(const xcb_get_geometry_reply_t& geometry, const xcb_shape_get_rectangles_reply_t* shape)
{
    const QRect whole = x11regions::withBorder(geometry);
    if (shape == nullptr)
        return whole;
    const auto count = static_cast<std::size_t>(xcb_shape_get_rectangles_rectangles_length(shape));
    QRegion region = x11regions::toRegion({xcb_shape_get_rectangles_rectangles(shape), count});
    if (count > x11regions::kMaxRectangles)
        region = region.boundingRect();
    return region.translated(whole.topLeft() + QPoint(geometry.border_width, geometry.border_width)) & whole;
}

QRegion edgesOf(const QRect& rectangle, int depthPx)
{
    return QRegion(rectangle) - rectangle.adjusted(depthPx, depthPx, -depthPx, -depthPx);
}

} // namespace

bool ExcludedAreas::areThereAny() const
{
    return !m_areas.empty() || !ExcludedWindows::ofProgram().all().empty();
}

void ExcludedAreas::look(std::uint64_t nowNs)
{
    if (nowNs != m_lookNs)
        beginFrame(nowNs);
    xcb_connection_t* const connection = m_connection.get();
    struct Question
    {
        Shown window;
        xcb_get_geometry_cookie_t geometry;
        xcb_shape_get_rectangles_cookie_t shape;
    };
    std::vector<Question> questions;
    for (const Shown& window : shownWindows()) {
        Question question{window, xcb_get_geometry(connection, window.topLevel), {}};
        if (m_connection.hasShape())
            question.shape = xcb_shape_get_rectangles(connection, window.topLevel, XCB_SHAPE_SK_BOUNDING);
        questions.push_back(question);
    }
    for (const Question& question : questions) {
        const auto geometry = answer<xcb_get_geometry_reply>(connection, question.geometry);
        platform::xcb::Owned<xcb_shape_get_rectangles_reply_t> shape;
        if (m_connection.hasShape())
            shape = answer<xcb_shape_get_rectangles_reply>(connection, question.shape);
        if (!geometry)
            continue;
        QRegion region = regionOf(*geometry, shape.get());
        if (question.window.borderPx > 0)
            region &= edgesOf(x11regions::withBorder(*geometry), question.window.borderPx);
        note(question.window, region, nowNs);
    }
}

void ExcludedAreas::beginFrame(std::uint64_t nowNs)
{
    for (Area& area : m_areas) {
        if (isPresent(area))
            area.seenNs = nowNs - 1;
    }
    std::erase_if(m_areas, [nowNs](const Area& area) { return nowNs - area.seenNs > kLingerNs; });
    m_lookNs = nowNs;
}

/// One that goes in between answers nothing, and was on the screen before.
std::vector<ExcludedAreas::Shown> ExcludedAreas::shownWindows()
{
    xcb_connection_t* const connection = m_connection.get();
    struct Question
    {
        ExcludedWindow window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_query_tree_cookie_t tree;
    };
    std::vector<Question> questions;
    m_windows = ExcludedWindows::ofProgram().all();
    for (const ExcludedWindow& window : m_windows)
        questions.push_back(
            {window, xcb_get_window_attributes(connection, window.id), xcb_query_tree(connection, window.id)});
    std::vector<Shown> shown;
    for (const Question& question : questions) {
        const auto attributes = answer<xcb_get_window_attributes_reply>(connection, question.attributes);
        const auto tree = answer<xcb_query_tree_reply>(connection, question.tree);
        if (attributes && tree && attributes->map_state == XCB_MAP_STATE_VIEWABLE)
            shown.push_back({topLevelOf(question.window.id, tree->parent), question.window.borderPx});
    }
    return shown;
}

xcb_window_t ExcludedAreas::topLevelOf(xcb_window_t window, xcb_window_t parent) const
{
    while (parent != m_connection.root() && parent != XCB_WINDOW_NONE) {
        window = parent;
        const auto tree = answer<xcb_query_tree_reply>(m_connection.get(), xcb_query_tree(m_connection.get(), window));
        parent = tree ? tree->parent : xcb_window_t{XCB_WINDOW_NONE};
    }
    return window;
}

void ExcludedAreas::note(const Shown& window, const QRegion& region, std::uint64_t nowNs)
{
    const auto known = std::ranges::find_if(
        m_areas, [&](const Area& area) { return area.window.topLevel == window.topLevel && area.region == region; });
    if (known != m_areas.end())
        known->seenNs = nowNs;
    else
        m_areas.push_back({window, region, nowNs});
}

QRegion ExcludedAreas::present() const
{
    QRegion region;
    for (const Area& area : m_areas) {
        if (isPresent(area))
            region += area.region;
    }
    return region;
}

QRegion ExcludedAreas::recent() const
{
    QRegion region;
    for (const Area& area : m_areas) {
        if (!isPresent(area))
            region += area.region;
    }
    return region - present();
}

bool ExcludedAreas::isLookDue() const
{
    const bool isAnyRecent = std::ranges::any_of(m_areas, [this](const Area& area) { return !isPresent(area); });
    return isAnyRecent || ExcludedWindows::ofProgram().all() != m_windows;
}

/// One that was entered since the last look may be on the screen by now.
bool ExcludedAreas::isExcluded(xcb_window_t topLevel) const
{
    const auto isSeen = [topLevel](const Area& area) {
        return area.window.topLevel == topLevel && area.window.borderPx == 0;
    };
    const auto isEntered = [topLevel](const ExcludedWindow& window) {
        return window.id == topLevel && window.borderPx == 0;
    };
    return std::ranges::any_of(m_areas, isSeen) || std::ranges::any_of(ExcludedWindows::ofProgram().all(), isEntered);
}

QRegion ExcludedAreas::excludedPartOf(xcb_window_t topLevel) const
{
    QRegion part;
    for (const Area& area : m_areas) {
        if (area.window.topLevel == topLevel)
            part += area.region;
    }
    return part;
}
