// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/obswrapper.h"

#include "app/sclogger.h"
#include "engine/capture/capturetargets.h"
#include "engine/capture/exactpixels.h"
#include "engine/capture/screenvideo.h"
#include "engine/core/enginecore.h"

#include <QDebug>

#include <utility>

#include <algorithm>

namespace {

/// libobs rounds its own video down to multiples of them.
constexpr QSize kEngineVideoSteps(4, 2);

using Need = EngineVideo::Need;

} // namespace

ObsWrapper::ObsWrapper(CapturePlatform platform, const EngineTimings& timings)
    : m_platform(std::move(platform)), m_timings(timings)
{
    connect(&m_audio, &AudioDevices::desktopLevelsChanged, this, [this](const AudioLevels& levels) {
        emit playerVolumeDataChange(levels.magnitude.data(), levels.peak.data(), levels.inputPeak.data());
    });
    connect(&m_audio, &AudioDevices::microphoneLevelsChanged, this, [this](const AudioLevels& levels) {
        emit micVolumeDataChange(levels.magnitude.data(), levels.peak.data(), levels.inputPeak.data());
    });
    connect(&m_audio, &AudioDevices::lost, this, &ObsWrapper::audioLost);
    connect(&m_audio, &AudioDevices::returned, this, &ObsWrapper::audioReturned);
    connect(&m_audio, &AudioDevices::fellBack, this, &ObsWrapper::audioFellBack);
    connect(&m_audio, &AudioDevices::returnedToChosen, this, &ObsWrapper::audioReturnedToChosen);
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
    m_direct.probe();
    m_capture.setClosable(m_direct.works());
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
    const EngineVideo::Settings asked{QSize(srcWidth, srcHeight), QSize(outputWidth, outputHeight), fps};
    const int result = m_engineVideo.reset(asked, m_direct.isUsed() ? Need::Pace : Need::Frames);
    if (result == OBS_VIDEO_SUCCESS)
        videoWasReset();
    return result;
}

void ObsWrapper::videoWasReset()
{
    m_fileOutput.videoWasReset();
    m_capture.videoWasReset();
    m_scene.stretchOver(m_engineVideo.outputSize());
}

QSize ObsWrapper::videoSteps() const
{
    return m_direct.works() ? QSize(2, 2) : kEngineVideoSteps;
}

int ObsWrapper::setupScene(int captureType)
{
    m_isSceneWanted = true;
    m_direct.setTarget(QRect(), QMargins());
    fitVideo(Need::Pace);
    return m_scene.setUp(captureType != kCaptureMonitor);
}

bool ObsWrapper::setCaptureTarget(const char* target, int captureType, bool, int left, int right, int top, int bottom)
{
    const bool window = captureType != kCaptureMonitor;
    const QString name = QString::fromUtf8(target);
    const QMargins crop(left, top, right, bottom);
    if (!m_capture.setTarget(window, name, crop))
        return false;
    // Where a window lies on the desktop is not known here.
    const QRect screen = window ? QRect() : captureTargetGeometry(name);
    // A recording keeps what captures it.
    if (isRecording() && screen.isEmpty() == m_direct.isUsed())
        return true;
    m_direct.setTarget(screen, crop);
    fitVideo(std::max(m_engineVideo.need(), Need::Pace));
    renderSceneAsNeeded();
    return true;
}

void ObsWrapper::setSceneRendered(bool rendered)
{
    if (!rendered && isRecording() && isSceneRendered()) {
        SCLogger::warning(QStringLiteral("The scene stays: a recording runs"));
        return;
    }
    m_isSceneWanted = rendered;
    if (!rendered && !m_fileOutput.isPrepared())
        fitVideo(Need::Nothing);
    renderSceneAsNeeded();
}

/// @param directNeed of libobs' own video where the desktop is captured without the scene
void ObsWrapper::fitVideo(Need directNeed)
{
    const Need need = m_direct.isUsed() ? directNeed : Need::Frames;
    if (need != m_engineVideo.need() && m_fileOutput.prepareVideoReset() &&
        m_engineVideo.setNeed(need) == OBS_VIDEO_SUCCESS)
        videoWasReset();
}

void ObsWrapper::renderSceneAsNeeded()
{
    m_scene.setRendered(m_isSceneWanted && !m_direct.isUsed());
}

void ObsWrapper::setCaptureCursor(bool show)
{
    m_capture.setCursor(show);
    m_direct.setPointer(m_capture.pointer());
}

void ObsWrapper::setCursorEffects(bool show)
{
    m_capture.setCursorEffects(show);
    m_direct.setPointer(m_capture.pointer());
}

std::shared_ptr<ScreenVideo> ObsWrapper::openVideo(QSize& size, int fps, bool showsScreen)
{
    m_direct.setPointer(m_capture.pointer());
    std::shared_ptr<ScreenVideo> video = m_direct.open(size, fps, showsScreen);
    if (m_direct.hasFailed())
        fitVideoToScene(size, fps);
    else
        fitVideo(video ? Need::Pace : Need::Frames);
    renderSceneAsNeeded();
    return video;
}

/// In the place of a video of any even size.
void ObsWrapper::fitVideoToScene(QSize& size, int fps)
{
    size = exactpixels::grownSize(size, kEngineVideoSteps, m_direct.screenSize());
    if (m_fileOutput.prepareVideoReset() && m_engineVideo.reset({size, size, fps}, Need::Frames) == OBS_VIDEO_SUCCESS)
        videoWasReset();
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
