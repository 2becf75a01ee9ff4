// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_opening.h"
#include "platform/xcb_handles.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QRegion>
#include <QSocketNotifier>
#include <QWidget>

#include <array>
#include <string_view>

namespace platform {

namespace {

constexpr uint8_t kEventTypeMask = 0x7f;
/// The cross in the X server's own cursor font; its mask is the glyph after it.
constexpr uint16_t kCrossGlyph = 34;

Qt::MouseButton buttonOf(xcb_button_t number)
{
    switch (number) {
    case XCB_BUTTON_INDEX_1:
        return Qt::LeftButton;
    case XCB_BUTTON_INDEX_2:
        return Qt::MiddleButton;
    case XCB_BUTTON_INDEX_3:
        return Qt::RightButton;
    default:
        return Qt::NoButton;
    }
}

Qt::MouseButtons buttonsOf(uint16_t state)
{
    Qt::MouseButtons buttons;
    buttons.setFlag(Qt::LeftButton, (state & XCB_BUTTON_MASK_1) != 0);
    buttons.setFlag(Qt::MiddleButton, (state & XCB_BUTTON_MASK_2) != 0);
    buttons.setFlag(Qt::RightButton, (state & XCB_BUTTON_MASK_3) != 0);
    return buttons;
}

/// An input-only window in front of another one, which it follows and belongs to. On a connection of its own: Qt's
/// event stream stays untouched, and the server reports here where the other window really is.
class PointerCatcher : public QObject
{
public:
    explicit PointerCatcher(QWidget& window);

    /// Takes it off the screen at once. It may be handing over an event right now, and deletes itself later.
    void retire();

private:
    bool isConnected() const { return xcb_connection_has_error(m_connection.get()) == 0; }
    void make();
    void giveCross();
    void cover(int x, int y, int width, int height);
    void readEvents();
    void handle(const xcb_generic_event_t& event);
    void hand(QEvent::Type type, const xcb_button_press_event_t& event, Qt::MouseButton button,
              Qt::MouseButtons buttons);

    QWidget& m_target;
    xcb_window_t m_targetId;
    xcb::Connection m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    QSocketNotifier* m_notifier = nullptr;
    bool m_isRetired = false;
};

PointerCatcher::PointerCatcher(QWidget& window)
    : QObject(&window)
    , m_target(window)
    , m_targetId(static_cast<xcb_window_t>(window.winId()))
    , m_connection(xcb_connect(nullptr, nullptr))
{
    if (!isConnected())
        return;
    make();
    m_notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &PointerCatcher::readEvents);
}

void PointerCatcher::retire()
{
    m_isRetired = true;
    if (m_notifier != nullptr)
        m_notifier->setEnabled(false);
    if (m_window != XCB_WINDOW_NONE)
        xcb_destroy_window(m_connection.get(), m_window);
    xcb_flush(m_connection.get());
    deleteLater();
}

void PointerCatcher::make()
{
    xcb_connection_t* const connection = m_connection.get();
    const uint32_t wanted = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, m_targetId, XCB_CW_EVENT_MASK, &wanted);
    const auto geometry = xcb::answer<xcb_get_geometry_reply>(connection, xcb_get_geometry(connection, m_targetId));
    if (!geometry)
        return;
    m_window = xcb_generate_id(connection);
    const std::array<uint32_t, 2> values{1, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                                XCB_EVENT_MASK_POINTER_MOTION};
    xcb_create_window(connection, 0, m_window, geometry->root, geometry->x, geometry->y, geometry->width,
                      geometry->height, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    giveCross();
    cover(geometry->x, geometry->y, geometry->width, geometry->height);
    xcb_map_window(connection, m_window);
    xcb_flush(connection);
}

void PointerCatcher::giveCross()
{
    constexpr std::string_view kCursorFont = "cursor";
    constexpr uint16_t kFull = 0xffff;
    xcb_connection_t* const connection = m_connection.get();
    const xcb_font_t font = xcb_generate_id(connection);
    const xcb_cursor_t cursor = xcb_generate_id(connection);
    xcb_open_font(connection, font, static_cast<uint16_t>(kCursorFont.size()), kCursorFont.data());
    xcb_create_glyph_cursor(connection, cursor, font, font, kCrossGlyph, kCrossGlyph + 1, 0, 0, 0, kFull, kFull, kFull);
    xcb_change_window_attributes(connection, m_window, XCB_CW_CURSOR, &cursor);
    xcb_free_cursor(connection, cursor);
    xcb_close_font(connection, font);
}

void PointerCatcher::cover(int x, int y, int width, int height)
{
    const std::array<uint32_t, 6> values{static_cast<uint32_t>(x),
                                         static_cast<uint32_t>(y),
                                         static_cast<uint32_t>(width),
                                         static_cast<uint32_t>(height),
                                         m_targetId,
                                         XCB_STACK_MODE_ABOVE};
    xcb_configure_window(m_connection.get(), m_window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT | XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                         values.data());
    xcb_flush(m_connection.get());
}

void PointerCatcher::readEvents()
{
    while (!m_isRetired) {
        const xcb::Owned<xcb_generic_event_t> event(xcb_poll_for_event(m_connection.get()));
        if (!event)
            break;
        handle(*event);
    }
    if (!isConnected())
        m_notifier->setEnabled(false);
}

void PointerCatcher::handle(const xcb_generic_event_t& event)
{
    // A move is laid out as a press is.
    const auto& pointer = reinterpret_cast<const xcb_button_press_event_t&>(event);
    const Qt::MouseButtons before = buttonsOf(pointer.state);
    const Qt::MouseButton button = buttonOf(pointer.detail);
    const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    switch (event.response_type & kEventTypeMask) {
    case XCB_BUTTON_PRESS:
        hand(QEvent::MouseButtonPress, pointer, button, before | button);
        break;
    case XCB_BUTTON_RELEASE:
        hand(QEvent::MouseButtonRelease, pointer, button, before & ~Qt::MouseButtons(button));
        break;
    case XCB_MOTION_NOTIFY:
        hand(QEvent::MouseMove, pointer, Qt::NoButton, before);
        break;
    case XCB_CONFIGURE_NOTIFY:
        if (configured.window == m_targetId)
            cover(configured.x, configured.y, configured.width, configured.height);
        break;
    default:
        break;
    }
}

void PointerCatcher::hand(QEvent::Type type, const xcb_button_press_event_t& event, Qt::MouseButton button,
                          Qt::MouseButtons buttons)
{
    if (type != QEvent::MouseMove && button == Qt::NoButton)
        return;
    const QPointF local = QPointF(event.event_x, event.event_y) / m_target.devicePixelRatioF();
    QMouseEvent handed(type, local, m_target.mapToGlobal(local), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_target, &handed);
}

} // namespace

struct WindowOpening::Private
{
    QWidget& window;
    PointerCatcher* catcher = nullptr;

    void setCatching(bool on)
    {
        if (on == (catcher != nullptr))
            return;
        if (on) {
            catcher = new PointerCatcher(window);
        } else {
            catcher->retire();
            catcher = nullptr;
        }
    }
};

WindowOpening::WindowOpening(QWidget& window) : m_private(new Private{window}) {}

WindowOpening::~WindowOpening()
{
    m_private->setCatching(false);
}

void WindowOpening::update(Pointer pointer, bool isCompositing, const std::function<QRegion()>& painted)
{
    QWidget& window = m_private->window;
    const bool isTaken = pointer == Pointer::IsTaken;
    if (isTaken && isCompositing)
        window.clearMask();
    else
        window.setMask(painted());
    m_private->setCatching(isTaken && !isCompositing && window.isVisible());
}

} // namespace platform
