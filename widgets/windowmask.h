// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegion>

/// Makes a window invisible that keeps the mouse; an empty region would be no mask.
inline QRegion maskOfNothing()
{
    return {-1, -1, 1, 1};
}
