// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/files/file_opening.h"

namespace platform {

bool openWatched(const QString& /*path*/, const std::function<void()>& /*notOpened*/)
{
    return false;
}

void setOpeningWatched(bool /*watched*/) {}

} // namespace platform
