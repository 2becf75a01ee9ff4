#pragma once

namespace platform {

/// Whether the system mixes translucent windows with what lies below them right now. On Windows always. User-interface
/// thread.
///
/// Where it does not, the see-through parts of a window come out black: callers then cut them out with
/// QWidget::setMask(), which costs the smooth outline.
bool isCompositing();

} // namespace platform
