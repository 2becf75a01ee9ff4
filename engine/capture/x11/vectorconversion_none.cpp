// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/conversionkind.h"

std::vector<VideoConversionKind> vectorConversionKinds()
{
    return {};
}
