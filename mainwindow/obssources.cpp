#include "mainwindow/obssources.h"

#include "engine/obswrapper.h"

namespace {

const auto kDefaultDevice = QStringLiteral("default");

} // namespace

ObsSources::ObsSources(ObsWrapper& obs) : m_obs(obs) {}

void ObsSources::setSpeaker(bool on)
{
    m_obs.setDesktopAudioDevice(on, kDefaultDevice);
}

void ObsSources::setMicrophone(bool on)
{
    m_obs.setMicDevice(on, kDefaultDevice);
}

int ObsSources::microphoneCount()
{
    m_obs.refreshMicDevices();
    return static_cast<int>(m_obs.micDeviceNames().size());
}

void ObsSources::setPointer(bool on)
{
    m_obs.setCaptureCursor(on);
}
