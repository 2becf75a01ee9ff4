// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/display_affinity.h"

#include "platform/system_failure.h"

namespace platform {

namespace {

bool exclude(DisplayAffinity& affinity)
{
    if (!affinity.set(DisplayAffinity::kExcluded))
        return false;
    const std::optional<quint32> kept = affinity.get();
    if (kept == DisplayAffinity::kExcluded)
        return true;
    reportFailure(QStringLiteral("A window was to be left out of captures, and the system made it %1 instead of %2")
                      .arg(kept ? QString::number(*kept) : QStringLiteral("something that it does not say"))
                      .arg(DisplayAffinity::kExcluded));
    affinity.set(DisplayAffinity::kEverywhere);
    return false;
}

} // namespace

bool applyExclusion(DisplayAffinity& affinity, bool isKnown, bool excluded)
{
    if (!isKnown)
        return false;
    return excluded ? exclude(affinity) : affinity.set(DisplayAffinity::kEverywhere);
}

} // namespace platform
