// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRect>
#include <QSize>

#include <memory>

/// A window over the whole screen, below all others, that is filled with rectangles: plain drawing calls of the system,
/// and showing a number costs next to nothing. All in physical pixels.
class PatternCanvas
{
public:
    PatternCanvas();
    ~PatternCanvas();
    PatternCanvas(const PatternCanvas&) = delete;
    PatternCanvas& operator=(const PatternCanvas&) = delete;

    /// Whether there is no display, or none any more.
    bool isBroken() const;
    QSize size() const;
    void show(const QColor& background);
    void fill(const QRect& area, const QColor& colour);
    void flush();
    /// Whether some of the pattern has to be drawn again, asked since the last call.
    bool takeExposure();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
