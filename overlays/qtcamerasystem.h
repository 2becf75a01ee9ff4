// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/camerasystem.h"

/// By Qt Multimedia; none without its back end.
class QtCameraSystem : public CameraSystem
{
public:
    QList<CameraDevice> devices() const noexcept override;
    CameraDevice defaultDevice() const noexcept override;
    std::unique_ptr<Camera> createCamera(const CameraDevice& device) override;
};

/// Logs Qt's version and multimedia plug-ins, and the cameras with their formats. Any thread, as devices().
void writeCameraDiagnostics(const CameraSystem& cameras);
