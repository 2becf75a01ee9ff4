// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/pixelviews.h"
#include "engine/capture/pointercircles.h"

#include <QPoint>

#include <cstdint>

/// What of the pointer is drawn into frames.
struct FramePointer
{
    bool isShown = true;
    PointerEffectChoice effects;
    /// Physical pixels for each logical one.
    float pixelRatio = 1.0F;
};

/// Where the frames of a video come from that the program makes itself. One thread at a time.
class FrameSource
{
public:
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    /// Where the frames begin, in pixels of the desktop.
    virtual void setOrigin(const QPoint& origin) = 0;
    virtual void setPointer(const FramePointer& pointer) = 0;

    /// Looks at the screen.
    ///
    /// @param nowNs on libobs' clock
    virtual void update(std::uint64_t nowNs) = 0;
    /// Writes what update() saw. Frames are written to a few buffers in turn: each is given with what it held last.
    virtual void write(const I420View& frame) = 0;

protected:
    FrameSource() = default;
};
