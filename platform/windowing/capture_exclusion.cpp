// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/capture_exclusion.h"

#include "platform/system_failure.h"

#include <algorithm>

namespace platform {

namespace {

bool excludeAndVerify(DisplayAffinity& affinity)
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
    return excluded ? excludeAndVerify(affinity) : affinity.set(DisplayAffinity::kEverywhere);
}

bool excludeTogether(std::initializer_list<QWidget*> windows, const std::function<bool(QWidget&, bool)>& setExcluded)
{
    const auto exclude = [&](QWidget* window) { return setExcluded(*window, true); };
    const auto* const refused = std::find_if_not(windows.begin(), windows.end(), exclude);
    if (refused == windows.end())
        return true;
    std::for_each(windows.begin(), refused, [&](QWidget* window) { setExcluded(*window, false); });
    return false;
}

} // namespace platform
