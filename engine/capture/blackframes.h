// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/capture/framesource.h"

#include <QSet>
#include <QSize>

/// Black frames, for a recording that has audio alone.
class BlackFrames : public FrameSource
{
public:
    /// @param size of the frames; even
    explicit BlackFrames(const QSize& size) : m_size(size) {}

    void setOrigin(const QPoint&) override {}
    void setPointer(const FramePointer&) override {}
    void update(std::uint64_t) override {}
    void write(const I420View& frame) override;

private:
    const QSize m_size;
    QSet<const std::uint8_t*> m_written;
};
