// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/display_loss.h"

#include <utility>

namespace platform {

void endInOrderOnDisplayLoss() {}

DisplayLossAction::DisplayLossAction(std::function<void()> action) : m_action(std::move(action)) {}

DisplayLossAction::~DisplayLossAction() = default;

} // namespace platform
