// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// The name of the source on one of the engine's channels, or "nothing".
QString nameOnChannel(std::uint32_t channel);
