// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>

#include <obs.h>

#include <optional>

/// The filter that draws a circle at the pointer, and others while a button is down, into the frames of a monitor
/// capture.
///
/// It draws over the frame instead of into a copy: it costs the circles alone. Switched off, it is disabled. It belongs
/// below every other filter, because it draws in the pixels of the whole monitor.
namespace pointereffects {

/// Makes the filter and puts it on a capture source that has no filters yet. It follows the source's settings from then
/// on: those of PointerEffectChoice (pointercircles.h) take effect with the source's next update. Registers the
/// filter's type when needed. User-interface thread.
///
/// @return false when libobs does not make it
bool addTo(obs_source_t* capture);

/// Says where on the desktop the captured monitor begins, in physical pixels, and how many physical pixels a logical
/// one has. Nothing is drawn while there is no origin: the pointer's position in the frame is then not known.
void setMonitor(obs_source_t* capture, const std::optional<QPoint>& originPx, double pixelRatio);

} // namespace pointereffects
