// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/ratiopresets.h"

#include "mainwindow/capture/capturearea.h"

#include <algorithm>
#include <array>

namespace {

struct Preset
{
    const char* name = "";
    QSize size;
};

// Exactly, 9:16 would be 607.5 wide.
constexpr std::array<Preset, 4> kPresets{
    {{"16:9", {1920, 1080}}, {"9:16", {608, 1080}}, {"4:3", {1440, 1080}}, {"1:1", {1080, 1080}}}};

} // namespace

QStringList ratiopresets::names()
{
    QStringList names;
    for (const Preset& preset : kPresets)
        names.append(QLatin1String(preset.name));
    return names;
}

std::optional<QSize> ratiopresets::physicalSize(const QString& name)
{
    const auto* const found = std::find_if(
        kPresets.begin(), kPresets.end(), [&name](const Preset& preset) { return name == QLatin1String(preset.name); });
    return found == kPresets.end() ? std::nullopt : std::optional(found->size);
}

QRect ratiopresets::areaOn(const CaptureScreen& screen, const QSize& physicalSize, int borderPx)
{
    const QSize area(toLogicalPx(physicalSize.width(), screen.devicePixelRatio),
                     toLogicalPx(physicalSize.height(), screen.devicePixelRatio));
    const QSize frame = area + QSize(2 * borderPx, 2 * borderPx);
    const QPoint corner((screen.geometry.width() - frame.width()) / 2 + screen.geometry.x(),
                        (screen.geometry.height() - frame.height()) / 2 + screen.geometry.y());
    return {corner + QPoint(borderPx, borderPx), area};
}
