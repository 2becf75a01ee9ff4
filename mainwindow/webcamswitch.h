#pragma once

#include <QObject>

#include <memory>

class CameraSystem;
class QWidget;
class SCCameraWindow;
class SCSwitchWidget;

/// What the webcam's switch does: it shows the camera's picture over the desktop, where it is recorded with all the
/// rest, and takes it away again. The camera runs while the switch is on and not a moment longer.
///
/// Nothing is stored: the webcam is off after each start. Whoever closes the picture switches it off.
class WebcamSwitch : public QObject
{
    Q_OBJECT

public:
    /// The control must outlive this object, which belongs to window, as message boxes do.
    WebcamSwitch(SCSwitchWidget& control, std::shared_ptr<CameraSystem> cameras, QWidget* window);
    ~WebcamSwitch() override;

    void switchOff();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void onSwitched(bool on);
    SCCameraWindow& picture();

    SCSwitchWidget& m_control;
    std::shared_ptr<CameraSystem> m_cameras;
    QWidget& m_window;
    /// Made when it is first needed. No child of the window, which is minimised while a recording runs.
    std::unique_ptr<SCCameraWindow> m_picture;
};
