// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

/// The machine's cameras through Qt Multimedia; none where that has no back end.
class QtCameraSystem : public CameraSystem
{
public:
    QList<CameraDevice> devices() const noexcept override;
    CameraDevice defaultDevice() const noexcept override;
    std::unique_ptr<Camera> createCamera(const CameraDevice& device) override;
};

/// Logs the version of Qt, its multimedia plug-ins, and each camera with its formats. Any thread, as devices().
void writeCameraDiagnostics(const CameraSystem& cameras);
