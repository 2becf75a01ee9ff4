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
