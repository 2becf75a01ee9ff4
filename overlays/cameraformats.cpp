// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/cameraformats.h"

#include <algorithm>
#include <array>

namespace cameraformats {

namespace {

constexpr std::array<QSize, 6> kCommonSizes{QSize(640, 480), QSize(800, 600), QSize(1280, 720),
                                            QSize(320, 240), QSize(352, 288), QSize(176, 144)};

qint64 pixelsOf(const CameraFormat& format)
{
    return static_cast<qint64>(format.resolution.width()) * format.resolution.height();
}

bool isAlive(const CameraFormat& format)
{
    return format.maximumFps >= kLeastFps;
}

bool hasFewerPixels(const CameraFormat& left, const CameraFormat& right)
{
    return pixelsOf(left) < pixelsOf(right);
}

} // namespace

std::optional<CameraFormat> best(const QList<CameraFormat>& formats)
{
    std::optional<CameraFormat> found;
    for (const CameraFormat& format : formats) {
        if (isAlive(format) && (!found || hasFewerPixels(*found, format)))
            found = format;
    }
    return found;
}

std::optional<CameraFormat> common(const QList<CameraFormat>& formats)
{
    for (const QSize& size : kCommonSizes) {
        for (const CameraFormat& format : formats) {
            if (format.resolution == size && isAlive(format))
                return format;
        }
    }
    return std::nullopt;
}

QList<CameraFormat> smallestFirst(QList<CameraFormat> formats)
{
    std::stable_sort(formats.begin(), formats.end(), hasFewerPixels);
    return formats;
}

} // namespace cameraformats
