// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/enginecapture.h"

#include "app/sclogger.h"
#include "engine/capture/capturetargets.h"
#include "engine/capture/exactpixels.h"
#include "engine/obswrapper.h"
#include "mainwindow/capture/capturedesktop.h"
#include "mainwindow/recording/recordingsession.h"

#include <QDebug>
#include <QGuiApplication>

bool EngineCapture::start()
{
    if (QGuiApplication::primaryScreen() == nullptr) {
        qWarning() << "Failed to get primary screen";
        return false;
    }
    const QSize size = primaryScreen().physicalSize();
    if (!m_engine.initialize(size.width(), size.height(), RecordingSession::kFramesPerSecond)) {
        SCLogger::warning(QStringLiteral("Failed to initialize OBS"));
        return false;
    }
    SCLogger::info(QStringLiteral("OBS initialized successfully"));
    m_isRunning = true;
    const int result = m_engine.setupScene(ObsWrapper::kCaptureMonitor);
    if (result != 0)
        SCLogger::error(QStringLiteral("The capture scene could not be made: code %1").arg(result));
    m_engine.refreshCaptureTargets(false);
    m_engine.setDesktopAudioDevice(true, kDefaultAudioDevice);
    m_engine.setMicDevice(true, kDefaultAudioDevice);
    return true;
}

void EngineCapture::refreshTargets()
{
    if (m_isRunning)
        m_engine.refreshCaptureTargets(false);
}

CaptureDesktop EngineCapture::desktop() const
{
    return CaptureDesktop::present(m_isRunning && m_engine.canSpanScreens());
}

QSize EngineCapture::videoSteps() const
{
    return m_isRunning ? m_engine.videoSteps() : QSize(1, 1);
}

QString EngineCapture::target(const CaptureScreen& screen) const
{
    return captureTargetForScreen(m_engine.captureTargetNames(), screen.physicalGeometry());
}

CaptureScreen EngineCapture::withPixels(const CaptureScreen& screen) const
{
    return ::withPixels(screen, captureTargetGeometry(target(screen)).size());
}

QSize EngineCapture::videoSize(const CaptureArea& area, const CaptureScreen& screen) const
{
    const CaptureScreen exact = withPixels(screen);
    return exactpixels::videoSize(area.physicalSize(exact), videoSteps(), exact.wholePixels());
}

bool EngineCapture::setTarget(const CaptureArea& area, const CaptureScreen& screen)
{
    const CaptureMargins margins = area.margins(withPixels(screen));
    const bool isListed =
        m_engine.setCaptureTarget(target(screen).toUtf8().constData(), ObsWrapper::kCaptureMonitor, margins.cropped,
                                  margins.left, margins.right, margins.top, margins.bottom);
    if (!isListed)
        SCLogger::warning(QStringLiteral("The screen is none of the engine's: \"%1\"")
                              .arg(m_engine.captureTargetNames().join(QLatin1String("\", \""))));
    return isListed;
}

bool EngineCapture::resetVideo(const QSize& size)
{
    const bool isReset = m_engine.resetVideo(size.width(), size.height(), size.width(), size.height(),
                                             RecordingSession::kFramesPerSecond) == 0;
    if (!isReset)
        SCLogger::warning(QStringLiteral("Failed to reset video"));
    return isReset;
}

void EngineCapture::setSceneRendered(bool rendered)
{
    m_engine.setSceneRendered(rendered);
}
