// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/display_choice.h"

#include <QByteArray>
#include <QtGlobal>

namespace platform {

namespace {

constexpr char kVariable[] = "QT_QPA_PLATFORM";

} // namespace

DisplayChoice::DisplayChoice()
    : m_chosen(qEnvironmentVariableIsEmpty(kVariable) && !qEnvironmentVariableIsEmpty("DISPLAY"))
{
    if (m_chosen)
        qputenv(kVariable, "xcb");
}

DisplayChoice::~DisplayChoice()
{
    if (m_chosen)
        qunsetenv(kVariable);
}

bool isWaylandSession()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace platform
