#pragma once

#include <QtGlobal>

class QSharedMemory;
class QString;

namespace platform {

/// Gives the segment its system-wide name, which on every system is the one that QSharedMemory makes of key.
///
/// On X11 systems the segment gets no lock of the toolkit's along with it: that is a System V semaphore, which a
/// process killed at the wrong moment leaves taken for ever, and which making a segment sets free whoever holds it.
/// There the caller excludes other copies himself, by a lock that the kernel drops with its holder
/// (platform::InstanceLock), whenever he attaches, makes, reads, writes or detaches the segment.
void nameSegment(QSharedMemory& segment, const QString& key);

/// Copies the first size bytes of an attached segment, on Windows under the segment's own lock.
void readSegment(QSharedMemory& segment, void* destination, qsizetype size);

/// Writes the first size bytes of an attached segment, on Windows under the segment's own lock.
void writeSegment(QSharedMemory& segment, const void* source, qsizetype size);

} // namespace platform
