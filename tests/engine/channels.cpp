// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/engine/channels.h"

#include "engine/core/obshandles.h"

QString nameOnChannel(std::uint32_t channel)
{
    const ObsSourceHandle source(obs_get_output_source(channel));
    return source ? QString::fromUtf8(obs_source_get_name(source.get())) : QStringLiteral("nothing");
}
