// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_hold.h"
#include "platform/xcb_handles.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace {

const auto kHoldName = QStringLiteral("windowHold");

/// Asks the window manager, whatever Qt takes the window's state for: of fast requests it sees the last outcome only.
void iconify(xcb_window_t window)
{
    using namespace platform::xcb;
    constexpr uint32_t kIconicState = 3;
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return;
    xcb_connection_t* const connection = x11->connection();
    const auto tree = answer<xcb_query_tree_reply>(connection, xcb_query_tree(connection, window));
    if (!tree)
        return;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atomNamed(connection, "WM_CHANGE_STATE");
    message.data.data32[0] = kIconicState;
    xcb_send_event(connection, 0, tree->root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

/// Minimises its window again each time that it comes to the screen.
class Hold : public QObject
{
public:
    explicit Hold(QWindow& window) : QObject(&window), m_window(window)
    {
        setObjectName(kHoldName);
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Expose && m_window.isExposed())
            iconify(static_cast<xcb_window_t>(m_window.winId()));
        return false;
    }

private:
    QWindow& m_window;
};

} // namespace

void platform::setHeld(QWidget& window, bool held)
{
    QWindow* const native = window.windowHandle();
    if (native == nullptr)
        return;
    // On the native window: the widget would be taken off the screen and put back.
    native->setFlag(Qt::WindowDoesNotAcceptFocus, held);
    delete native->findChild<QObject*>(kHoldName, Qt::FindDirectChildrenOnly);
    if (held)
        new Hold(*native);
}

std::optional<qintptr> platform::answerWhileHeld(const QByteArray& /*eventType*/, void* /*message*/)
{
    return std::nullopt;
}
