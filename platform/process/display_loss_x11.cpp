// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/display_loss.h"
#include "platform/system_failure.h"

#include <QLoggingCategory>
#include <QString>

#include <utility>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <unistd.h>
#include <vector>
// Last: its macros have the names of other things.
#include <X11/Xlib.h>

namespace platform {

namespace {

constexpr unsigned kEndLimitSeconds = 10;

QtMessageHandler g_messageHandler = nullptr;

/// Of the main thread.
std::vector<const DisplayLossAction*>& actions()
{
    static std::vector<const DisplayLossAction*> all;
    return all;
}

bool isMainThread()
{
    return gettid() == getpid();
}

/// For actions, or a main thread, that wait for what another thread took with it when it met the loss.
void limitEnd()
{
    std::signal(SIGALRM, [](int /*number*/) { std::_Exit(EXIT_FAILURE); });
    alarm(kEndLimitSeconds);
}

/// Main thread.
[[noreturn]] void end()
{
    static bool isEnding = false;
    // An action that meets the loss itself gets no further.
    if (std::exchange(isEnding, true))
        std::_Exit(EXIT_FAILURE);
    limitEnd();
    reportFailure(QStringLiteral("The X server is gone, the program ends"));
    for (const DisplayLossAction* const action : actions())
        action->run();
    std::_Exit(EXIT_FAILURE);
}

/// Qt reports the loss where it reads its events, and then calls exit().
void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    g_messageHandler(type, context, text);
    if (type == QtWarningMsg && text.startsWith(QLatin1String("The X11 connection broke")) && isMainThread())
        end();
}

/// Of Xlib, which calls exit() when this returns.
int onIoError(Display* /*display*/)
{
    if (isMainThread())
        end();
    limitEnd();
    // The main thread meets the loss as well.
    for (;;)
        pause();
}

/// xcb writes to a connection as to a file. What the program starts gets the default back.
void survivePipeSignal()
{
    struct sigaction action = {};
    action.sa_handler = [](int /*number*/) {};
    action.sa_flags = SA_RESTART;
    sigaction(SIGPIPE, &action, nullptr);
}

} // namespace

void endInOrderOnDisplayLoss()
{
    survivePipeSignal();
    XSetIOErrorHandler(onIoError);
    // Any thread may log while the second call runs.
    g_messageHandler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(onMessage);
    // Whatever QT_LOGGING_RULES leaves out.
    QLoggingCategory::defaultCategory()->setEnabled(QtWarningMsg, true);
}

DisplayLossAction::DisplayLossAction(std::function<void()> action) : m_action(std::move(action))
{
    actions().push_back(this);
}

DisplayLossAction::~DisplayLossAction()
{
    std::erase(actions(), this);
}

} // namespace platform

/// Takes the place of libxcb's. libobs asks for the pressed keys forty times a second, on a thread of its own, and
/// reads the reply without looking whether there is one: when the connection is lost there is neither a reply nor an
/// error.
extern "C" __attribute__((visibility("default"))) xcb_query_keymap_reply_t*
xcb_query_keymap_reply(xcb_connection_t* connection, xcb_query_keymap_cookie_t cookie, xcb_generic_error_t** error)
{
    void* const reply = xcb_wait_for_reply(connection, cookie.sequence, error);
    const bool isLost = reply == nullptr && (error == nullptr || *error == nullptr);
    return static_cast<xcb_query_keymap_reply_t*>(isLost ? std::calloc(1, sizeof(xcb_query_keymap_reply_t)) : reply);
}
