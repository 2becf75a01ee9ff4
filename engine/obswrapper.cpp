// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/obswrapper.h"

#include "app/sclogger.h"
#include "engine/core/enginecore.h"

#include <QDebug>

#include <utility>

ObsWrapper::ObsWrapper(CapturePlatform platform, const EngineTimings& timings)
    : m_platform(std::move(platform)), m_timings(timings)
{
    connect(&m_audio, &AudioDevices::desktopLevelsChanged, this, [this](const AudioLevels& levels) {
        emit playerVolumeDataChange(levels.magnitude.data(), levels.peak.data(), levels.inputPeak.data());
    });
    connect(&m_audio, &AudioDevices::microphoneLevelsChanged, this, [this](const AudioLevels& levels) {
        emit micVolumeDataChange(levels.magnitude.data(), levels.peak.data(), levels.inputPeak.data());
    });
    // On the thread that it comes from: receivers queue it.
    connect(&m_fileOutput, &FileOutput::statusChanged, this, &ObsWrapper::recordStatusChanged, Qt::DirectConnection);
}

ObsWrapper::~ObsWrapper()
{
    m_fileOutput.shutDown();
    m_audio.releaseMeters();
    m_fileOutput.releaseEncoders();
}

bool ObsWrapper::initialize(int width, int height, int fps)
{
    if (!obs_initialized() && !startEngine(width, height, fps))
        return false;
    if (!createOutputMode()) {
        qCritical() << "obs create output mode failed!";
        return false;
    }
    m_audio.create();
    m_ready = true;
    return true;
}

bool ObsWrapper::startEngine(int width, int height, int fps)
{
    if (!enginecore::startUp())
        return false;
    const int result = resetVideo(width, height, width, height, fps);
    if (result != OBS_VIDEO_SUCCESS) {
        qCritical() << "obs reset video failed!with" << result;
        return false;
    }
    prepareProcessEnd();
    enginecore::loadModules(m_platform);
    return true;
}

int ObsWrapper::resetVideo(int srcWidth, int srcHeight, int outputWidth, int outputHeight, int fps)
{
    qDebug() << "reset video with srcWidth" << srcWidth << "srcHeight" << srcHeight << "outPutWidth" << outputWidth
             << "outOutHeight" << outputHeight << "fps" << fps;
    if (!obs_initialized())
        qDebug() << "obs not initialized!";
    if (!m_fileOutput.prepareVideoReset())
        return OBS_VIDEO_CURRENTLY_ACTIVE;
    const QSize output(outputWidth, outputHeight);
    const int result = enginecore::resetVideo(m_platform, QSize(srcWidth, srcHeight), output, fps);
    if (result == OBS_VIDEO_SUCCESS) {
        m_fileOutput.videoWasReset();
        m_scene.stretchOver(output);
    }
    return result;
}

int ObsWrapper::setupScene(int captureType)
{
    return m_scene.setUp(captureType != kCaptureMonitor);
}

bool ObsWrapper::setCaptureTarget(const char* target, int captureType, bool, int left, int right, int top, int bottom)
{
    return m_capture.setTarget(captureType != kCaptureMonitor, QString::fromUtf8(target), {left, top, right, bottom});
}

void ObsWrapper::setSceneRendered(bool rendered)
{
    if (!rendered && isRecording() && isSceneRendered())
        SCLogger::warning(QStringLiteral("The scene stays: a recording runs"));
    else
        m_scene.setRendered(rendered);
}

QString ObsWrapper::stopReasonText() const
{
    const StopReason reason = stopReason();
    return reason.code == OBS_OUTPUT_SUCCESS && reason.text.isEmpty() ? QString() : describe(reason);
}

int ObsWrapper::audioOutputChannels() const
{
    return obs_initialized() ? static_cast<int>(audio_output_get_channels(obs_get_audio())) : 0;
}
