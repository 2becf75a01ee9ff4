// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class CameraSystem;
class QWidget;
class SCCameraWindow;
class SCSwitchWidget;

/// Shows and closes the webcam window; closing it switches the webcam off. Nothing is stored. User-interface thread.
class WebcamSwitch : public QObject
{
    Q_OBJECT

public:
    /// Belongs to window; control must outlive this object.
    WebcamSwitch(SCSwitchWidget& control, std::shared_ptr<CameraSystem> cameras, QWidget* window);
    ~WebcamSwitch() override;

    void switchOff();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void onSwitched(bool on);
    SCCameraWindow& cameraWindow();

    SCSwitchWidget& m_control;
    std::shared_ptr<CameraSystem> m_cameras;
    QWidget& m_window;
    /// Made on demand. No child of the window, which is minimised while a recording runs.
    std::unique_ptr<SCCameraWindow> m_cameraWindow;
};
