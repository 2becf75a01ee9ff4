// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/directcapture.h"

#include "app/sclogger.h"
#include "engine/capture/blackframes.h"
#include "engine/capture/captureplatform.h"
#include "engine/capture/exactpixels.h"
#include "engine/capture/screenvideo.h"
#include "engine/capture/videoprobe.h"

#include <obs.h>
#include <utility>

namespace {

constexpr char kChoice[] = "KESTRANO_CAPTURE";
constexpr char kScene[] = "scene";
constexpr QRect kSmallestArea(0, 0, 2, 2);
constexpr int kProbeFps = 30;
constexpr QSize kEven(2, 2);

void logScene(const QString& obstacle)
{
    SCLogger::info(QStringLiteral("The screen is captured through the engine's scene: %1").arg(obstacle));
}

QString makesNoVideo(const QSize& size)
{
    return QStringLiteral("libobs makes no video of %1x%2").arg(size.width()).arg(size.height());
}

QString cannotRecordOthers()
{
    return QStringLiteral("libobs %1 records no video but its own").arg(QLatin1String(obs_get_version_string()));
}

} // namespace

bool recordsOtherVideos(std::uint32_t libobsVersion)
{
    constexpr std::uint32_t kFirstWithout = MAKE_SEMANTIC_VERSION(31, 1, 0);
    constexpr std::uint32_t kFirstMended = MAKE_SEMANTIC_VERSION(31, 1, 2);
    return libobsVersion < kFirstWithout || libobsVersion >= kFirstMended;
}

void DirectCapture::probe()
{
    m_works = false;
    if (!m_platform.openFrames)
        return;
    const QString found = obstacle();
    m_works = found.isEmpty();
    if (!m_works)
        logScene(found);
}

QString DirectCapture::obstacle() const
{
    if (qgetenv(kChoice) == kScene)
        return QStringLiteral("%1=%2").arg(QLatin1String(kChoice), QLatin1String(kScene));
    if (!recordsOtherVideos(obs_get_version()))
        return cannotRecordOthers();
    QString found;
    auto frames = m_platform.openFrames(kSmallestArea, found);
    if (!frames)
        return found;
    const auto video = ScreenVideo::open(std::move(frames), kSmallestArea.size(), kProbeFps);
    if (!video)
        return makesNoVideo(kSmallestArea.size());
    return deliversFramesOf(video->video()) ? QString() : cannotRecordOthers();
}

QRect DirectCapture::area() const
{
    const QMargins crop = exactpixels::cropTo(m_size, m_crop, m_screen.size());
    return {m_screen.topLeft() + QPoint(crop.left(), crop.top()), m_size};
}

void DirectCapture::setTarget(const QRect& screen, const QMargins& crop)
{
    m_screen = screen;
    m_crop = crop;
    if (const auto video = m_video.lock())
        video->setOrigin(area().topLeft());
}

void DirectCapture::setPointer(const FramePointer& pointer)
{
    m_pointer = pointer;
    if (const auto video = m_video.lock())
        video->setPointer(m_pointer);
}

std::shared_ptr<ScreenVideo> DirectCapture::open(const QSize& size, int fps, bool showsScreen)
{
    m_hasFailed = false;
    if (!isUsed() || size.isEmpty())
        return nullptr;
    m_size = exactpixels::videoSize(size, kEven, m_screen.size());
    const QRect recorded = showsScreen ? area() : kSmallestArea;
    QString found;
    std::shared_ptr<ScreenVideo> video;
    if (auto frames = openFrames(recorded, showsScreen, found))
        video = ScreenVideo::open(std::move(frames), recorded.size(), fps);
    m_hasFailed = !video;
    if (m_hasFailed)
        logScene(found.isEmpty() ? makesNoVideo(recorded.size()) : found);
    m_video = video;
    return video;
}

std::unique_ptr<FrameSource> DirectCapture::openFrames(const QRect& area, bool showsScreen, QString& obstacle) const
{
    if (!showsScreen)
        return std::make_unique<BlackFrames>(area.size());
    auto frames = m_platform.openFrames(area, obstacle);
    if (frames)
        frames->setPointer(m_pointer);
    return frames;
}
