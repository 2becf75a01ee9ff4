#pragma once

#include "overlays/camerasystem.h"

/// The cameras of the machine, through Qt Multimedia. Where that has no back end for the system, there are none.
class QtCameraSystem : public CameraSystem
{
public:
    QList<CameraDevice> devices() const noexcept override;
    CameraDevice defaultDevice() const noexcept override;
    std::unique_ptr<Camera> createCamera(const CameraDevice& device) override;
};

/// Writes what may explain a missing camera picture to the log: the version of Qt, the
/// folders of its multimedia plug-ins with their content, and each camera with its formats. Any thread, once the
/// user-interface thread has asked the system for its cameras.
void writeCameraDiagnostics(const CameraSystem& cameras);
