// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/excluded_windows.h"
#include "platform/windowing/frame_exclusion.h"

#include <QPlatformSurfaceEvent>
#include <QWidget>
#include <QWindow>

#include <utility>

#include <algorithm>

namespace platform {

namespace {

/// Keeps the entry of a window, whose child it is, up to date.
class FrameExclusion : public QObject
{
public:
    /// Null without one.
    static FrameExclusion* of(const QWidget& window)
    {
        const QObjectList& children = window.children();
        const auto found = std::ranges::find_if(children, &FrameExclusion::isOne);
        return found != children.end() ? static_cast<FrameExclusion*>(*found) : nullptr;
    }

    explicit FrameExclusion(QWidget& window) : QObject(&window), m_window(window)
    {
        // Qt makes another native window in place of a tool tip's without this hint, and shows it before anybody can
        // know of it.
        if (window.windowType() == Qt::ToolTip && window.internalWinId() == 0)
            window.overrideWindowFlags(window.windowFlags() | Qt::WindowStaysOnTopHint);
        window.installEventFilter(this);
    }
    ~FrameExclusion() override { enter(0); }

    void setBorder(int depthPx)
    {
        m_entry.borderPx = depthPx;
        follow();
    }

protected:
    /// Qt makes another native window where it has to, with or without another QWindow.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (isSurfaceGoing(*event))
            enter(0);
        else if (isSurfaceEvent(*event))
            follow();
        return QObject::eventFilter(watched, event);
    }

private:
    static bool isOne(QObject* child) { return dynamic_cast<FrameExclusion*>(child) != nullptr; }

    static bool isSurfaceEvent(const QEvent& event)
    {
        return event.type() == QEvent::WinIdChange || event.type() == QEvent::PlatformSurface ||
               event.type() == QEvent::Expose;
    }

    static bool isSurfaceGoing(const QEvent& event)
    {
        return event.type() == QEvent::PlatformSurface &&
               static_cast<const QPlatformSurfaceEvent&>(event).surfaceEventType() ==
                   QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed;
    }

    void follow()
    {
        QWindow* const window = m_window.windowHandle();
        if (window != nullptr)
            window->installEventFilter(this);
        enter(window != nullptr && window->handle() != nullptr ? window->winId() : 0);
    }

    void enter(WId id)
    {
        ExcludedWindows& windows = ExcludedWindows::ofProgram();
        const auto before = std::exchange(m_entry.id, static_cast<std::uint32_t>(id));
        if (before != 0 && before != m_entry.id)
            windows.remove(before);
        if (m_entry.id != 0)
            windows.insert(m_entry);
    }

    const QWidget& m_window;
    ExcludedWindow m_entry;
};

FrameExclusion& exclusionOf(QWidget& window)
{
    FrameExclusion* const present = FrameExclusion::of(window);
    return present != nullptr ? *present : *new FrameExclusion(window);
}

} // namespace

void setExcludedFromFrames(QWidget& window, bool excluded)
{
    if (excluded)
        exclusionOf(window).setBorder(0);
    else
        delete FrameExclusion::of(window);
}

void excludeBorderFromFrames(QWidget& window, int depthPx)
{
    exclusionOf(window).setBorder(depthPx);
}

} // namespace platform
