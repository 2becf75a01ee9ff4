#pragma once

#include <QtGlobal>

namespace platform {

/// Whether no process of that id is there any more. A process that may not be looked at is there. Ids are used again,
/// so that false proves nothing. Nor does true of a process that this one cannot see, such as one in a sandbox with
/// process ids of its own.
bool isProcessGone(qint64 processId);

} // namespace platform
