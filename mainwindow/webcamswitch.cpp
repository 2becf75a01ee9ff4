// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/webcamswitch.h"

#include "overlays/camerasystem.h"
#include "overlays/sccamerawindow.h"
#include "overlays/scswitchwidget.h"
#include "widgets/messagebox.h"

#include <QEvent>
#include <QSignalBlocker>

#include <utility>

WebcamSwitch::WebcamSwitch(SCSwitchWidget& control, std::shared_ptr<CameraSystem> cameras, QWidget* window)
    : QObject(window), m_control(control), m_cameras(std::move(cameras)), m_window(*window)
{
    connect(&m_control, &SCSwitchWidget::checkedChanged, this, &WebcamSwitch::onSwitched);
}

WebcamSwitch::~WebcamSwitch() = default;

void WebcamSwitch::switchOff()
{
    m_control.setChecked(false);
}

void WebcamSwitch::onSwitched(bool on)
{
    if (!on) {
        // A hidden window would start the camera again.
        if (m_cameraWindow != nullptr)
            m_cameraWindow->close();
        return;
    }
    if (m_cameras->devices().isEmpty()) {
        messagebox::warning(&m_window, tr("Warning"), tr("No camera device found!"));
        m_control.setChecked(false);
        return;
    }
    cameraWindow().show();
}

SCCameraWindow& WebcamSwitch::cameraWindow()
{
    if (m_cameraWindow == nullptr) {
        m_cameraWindow = std::make_unique<SCCameraWindow>(m_cameras);
        m_cameraWindow->installEventFilter(this);
    }
    return *m_cameraWindow;
}

bool WebcamSwitch::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_cameraWindow.get() && event->type() == QEvent::Close && m_control.isChecked()) {
        // By the user: it need not be closed once more.
        const QSignalBlocker blocker(m_control);
        m_control.setChecked(false);
    }
    return QObject::eventFilter(watched, event);
}
