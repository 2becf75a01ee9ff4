#pragma once

namespace platform {

/// Waits until what was written to an open file is on the disk itself. fileDescriptor is the C library's number
/// (QFileDevice::handle()), from which everything that a buffer held has been written out. Any thread.
///
/// @return false when some of it could not be written, which some file systems notice no earlier than this. One that
///         cannot wait counts as success.
bool syncToDisk(int fileDescriptor);

} // namespace platform
