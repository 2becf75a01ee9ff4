// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/capture_exclusion.h"

#include <algorithm>

namespace platform {

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
