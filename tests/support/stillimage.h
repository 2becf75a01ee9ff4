// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QRect>
#include <QString>

#include <memory>

/// An image that fills the X display below all other windows for as long as the object lives. The server itself keeps
/// it shown, so the process that made it need not look after it. Physical pixels throughout.
class StillImage
{
public:
    explicit StillImage(const QImage& image);
    ~StillImage();
    StillImage(const StillImage&) = delete;
    StillImage& operator=(const StillImage&) = delete;

    /// Whether there was a display to show it on.
    bool isShown() const;

    /// The size of the display in pixels; empty where there is none.
    static QSize displaySize();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

/// An image in which each pixel shows its position: lines one pixel wide, and between them cells of many greys. Grey
/// only, of which nothing is lost where an encoder thins the colours out.
QImage gridImage(const QSize& size);

/// Why a decoded image is not the given part of the grid, pixel by pixel, within what an encoder loses; empty when it
/// is.
QString differenceFromGrid(const QImage& image, const QRect& part, const QImage& grid);
