// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_opening.h"

#include <QRegion>

namespace platform {

struct WindowOpening::Private
{};

WindowOpening::WindowOpening(QWidget&) {}

WindowOpening::~WindowOpening() = default;

void WindowOpening::update(Pointer, bool, const std::function<QRegion()>&) {}

} // namespace platform
