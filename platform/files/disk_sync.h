// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace platform {

/// Waits until what was written to an open file (QFileDevice::handle()), and flushed, is on the disk. Any thread.
///
/// @return false when some of it could not be written. A file system that cannot wait counts as success.
bool syncToDisk(int fileDescriptor);

} // namespace platform
