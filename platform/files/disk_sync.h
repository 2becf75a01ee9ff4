// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// Waits until the written and flushed content of an open file (QFileDevice::handle()) is on the disk. Any thread.
/// @return false when some of it could not be written. A file system that cannot wait counts as success.
bool syncToDisk(int fileDescriptor);

} // namespace platform
