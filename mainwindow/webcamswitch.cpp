#include "mainwindow/webcamswitch.h"

#include "overlays/camerasystem.h"
#include "overlays/sccamerawindow.h"
#include "overlays/scswitchwidget.h"
#include "widgets/messagebox.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSignalBlocker>

#include <utility>

namespace {

QString text(const char* source)
{
    return QCoreApplication::translate("SCMainWindow", source);
}

} // namespace

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
        // Not just hidden: that would bring the camera back to life.
        if (m_picture != nullptr)
            m_picture->close();
        return;
    }
    if (m_cameras->devices().isEmpty()) {
        messagebox::warning(&m_window, text("Warning"), text("No camera device found!"));
        m_control.setChecked(false);
        return;
    }
    picture().show();
}

SCCameraWindow& WebcamSwitch::picture()
{
    if (m_picture == nullptr) {
        m_picture = std::make_unique<SCCameraWindow>(m_cameras);
        m_picture->installEventFilter(this);
    }
    return *m_picture;
}

bool WebcamSwitch::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_picture.get() && event->type() == QEvent::Close && m_control.isChecked()) {
        // By the user, with what the desktop has for that; it need not be closed once more.
        const QSignalBlocker blocker(m_control);
        m_control.setChecked(false);
    }
    return QObject::eventFilter(watched, event);
}
