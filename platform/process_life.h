#pragma once

#include <QtGlobal>

namespace platform {

/// Whether no process of that id is there any more. A process that may not be looked at is there. Ids are used again,
/// so that false proves nothing.
bool isProcessGone(qint64 processId);

} // namespace platform
