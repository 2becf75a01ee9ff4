// What the main window captures: mode tiles, region, ratio presets, the screen switch and the engine's picture.

#include "app/sclogger.h"
#include "app/settings.h"
#include "engine/capturetargets.h"
#include "engine/obswrapper.h"
#include "engine/recordingformat.h"
#include "mainwindow/capture/primaryscreen.h"
#include "mainwindow/capture/ratiopresets.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/screenshotsession.h"
#include "mainwindow/sourceswitches.h"
#include "ui_scmainwindow.h"
#include "widgets/framegeometry.h"
#include "widgets/icons.h"

#include <QDebug>
#include <QGuiApplication>
#include <QSettings>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// Less of a region than this is no picture to the engine, which rounds sizes down; with a column more, since a region
/// never has the desktop's first. Logical pixels.
constexpr QSize kSmallestRegion(5, 2);

/// Moved onto the screen as far as it fits.
QRect keptOn(const QRect& screen, const QRect& area)
{
    return {framegeometry::moved(area, {}, screen, 0), area.size()};
}

} // namespace

void SCMainWindow::initializeCapture()
{
    if (QGuiApplication::primaryScreen() == nullptr) {
        qWarning() << "Failed to get primary screen";
        return;
    }
    const QSize size = primaryScreen().physicalSize();
    if (!m_obs->initialize(size.width(), size.height(), RecordingSession::kFramesPerSecond)) {
        SCLogger::warning(QStringLiteral("Failed to initialize OBS"));
        return;
    }
    SCLogger::info(QStringLiteral("OBS initialized successfully"));
    m_engineRuns = true;
    setUpScene();
    applyCaptureArea();
    m_switches->attachMeters(*m_obs);
    restoreSwitches();
    // Nobody looks at the picture before it is recorded.
    m_obs->setSceneRendered(false);
    m_recorder.setReady(true);
}

void SCMainWindow::setUpScene()
{
    const int result = m_obs->setupScene(ObsWrapper::kCaptureMonitor);
    if (result != 0)
        SCLogger::error(QStringLiteral("The capture scene could not be made: code %1").arg(result));
    m_obs->refreshCaptureTargets(false);
    m_sources.setSpeaker(true);
    m_sources.setMicrophone(true);
}

void SCMainWindow::restoreSwitches()
{
    m_screenOn = m_settings->value(settingskeys::kScreenSwitch).toBool();
    const QSignalBlocker blocker(m_ui->screenSwitch);
    m_ui->screenSwitch->setChecked(m_screenOn);
    // A stored choice of sound alone goes on where the format says otherwise.
    if (!m_screenOn && hasVideo(recordingFormatFromIndex(m_ui->formatBox->currentIndex())))
        m_ui->formatBox->setCurrentIndex(static_cast<int>(RecordingFormat::Mp3));
    showMode();
    m_switches->restore();
}

void SCMainWindow::applyCaptureArea()
{
    const CaptureScreen screen = primaryScreen();
    const QRect& whole = screen.geometry;
    SCLogger::debug(QStringLiteral("Screen geometry: x=%1, y=%2, width=%3, height=%4")
                        .arg(whole.x())
                        .arg(whole.y())
                        .arg(whole.width())
                        .arg(whole.height()));
    const QRect area = m_captureArea.rectOn(screen);
    SCLogger::debug(QStringLiteral("position %1 %2 %3 %4")
                        .arg(area.x())
                        .arg(area.y())
                        .arg(area.x() + area.width())
                        .arg(area.y() + area.height()));
    const QSize size = m_captureArea.physicalSize(screen);
    m_ui->widthEdit->setText(QString::number(size.width()));
    m_ui->heightEdit->setText(QString::number(size.height()));
    if (m_engineRuns)
        setCaptureTarget();
}

bool SCMainWindow::areaFollowsScreen() const
{
    // The whole screen follows the screen: its size or place may have changed since the last recording.
    const bool screenChanged =
        m_captureArea.mode() != CaptureMode::Region && m_captureArea.rect() != primaryScreen().geometry;
    return m_captureArea.isUnset() || screenChanged;
}

bool SCMainWindow::resetRecordingArea()
{
    const CaptureScreen screen = primaryScreen();
    if (areaFollowsScreen()) {
        m_captureArea.setRect(screen.geometry);
        applyCaptureArea();
    }
    const QSize logical = m_captureArea.rectOn(screen).size();
    SCLogger::debug(QStringLiteral("Recording area set to: %1x%2").arg(logical.width()).arg(logical.height()));
    const QSize size = m_captureArea.physicalSize(screen);
    if (m_obs->resetVideo(size.width(), size.height(), size.width(), size.height(),
                          RecordingSession::kFramesPerSecond) != 0) {
        SCLogger::warning(QStringLiteral("Failed to reset video"));
        return false;
    }
    return true;
}

/// What a recording is about to be made of. The primary screen may have become another one, or smaller, since the area
/// was chosen, and a preset may be larger than the screen: then the fields do not tell the picture's size yet.
void SCMainWindow::bringAreaUpToDate()
{
    const CaptureScreen screen = primaryScreen();
    const bool region = m_captureArea.mode() == CaptureMode::Region && !m_captureArea.isUnset();
    if (region && !screen.geometry.intersects(m_captureArea.rect())) {
        SCLogger::warning(
            QStringLiteral("The chosen region is not on the primary screen any more; all of it is recorded"));
        chooseFullScreen();
    } else if (region && !screen.geometry.contains(m_captureArea.rect())) {
        m_captureArea.setRegion(m_captureArea.rect(), screen);
        m_region->place(m_captureArea.rect());
        applyCaptureArea();
    } else if (region && !fieldsTellTheSize(screen)) {
        applyCaptureArea();
    }
}

bool SCMainWindow::fieldsTellTheSize(const CaptureScreen& screen) const
{
    const QSize size = m_captureArea.physicalSize(screen);
    const int roundingPx = static_cast<int>(std::ceil(screen.devicePixelRatio));
    return std::abs(m_ui->widthEdit->text().toInt() - size.width()) <= roundingPx &&
           std::abs(m_ui->heightEdit->text().toInt() - size.height()) <= roundingPx;
}

void SCMainWindow::setCaptureTarget()
{
    const QStringList& names = m_obs->captureTargetNames();
    const CaptureScreen screen = primaryScreen();
    const QString target = captureTargetForScreen(names, screen.physicalGeometry());
    // The engine knows the screen's pixels, which the toolkit rounds.
    const CaptureMargins margins = m_captureArea.margins(withPixels(screen, captureTargetGeometry(target).size()));
    m_targetFound = m_obs->setCaptureTarget(target.toUtf8().constData(), ObsWrapper::kCaptureMonitor, margins.cropped,
                                            margins.left, margins.right, margins.top, margins.bottom);
    if (!m_targetFound)
        SCLogger::warning(QStringLiteral("The primary screen is none of the engine's screens: \"%1\"")
                              .arg(names.join(QLatin1String("\", \""))));
}

void SCMainWindow::captureWholeScreen()
{
    m_captureArea.setRect(primaryScreen().geometry);
    applyCaptureArea();
    m_region->hideFrame();
    m_ui->ratioBox->setCurrentIndex(0);
}

void SCMainWindow::setMode(CaptureMode mode)
{
    m_captureArea.setMode(mode);
    showMode();
}

void SCMainWindow::showMode()
{
    const CaptureMode mode = m_captureArea.mode();
    m_ui->fullScreenTile->setSelected(m_screenOn && mode == CaptureMode::FullScreen);
    m_ui->regionTile->setSelected(m_screenOn && mode == CaptureMode::Region);
    m_ui->windowTile->setSelected(m_screenOn && mode == CaptureMode::Window);
}

/// The tiles' way to switch the screen on: without what the switch itself does about the area.
void SCMainWindow::setScreenOn(bool on)
{
    // Whoever has chosen sound alone with the screen switched on has not changed their mind.
    if (on != m_screenOn)
        fitFormatToScreen(on);
    m_screenOn = on;
    {
        const QSignalBlocker blocker(m_ui->screenSwitch);
        m_ui->screenSwitch->setChecked(on);
    }
    m_settings->setValue(settingskeys::kScreenSwitch, on);
}

void SCMainWindow::fitFormatToScreen(bool on)
{
    if (on && !recordsPicture())
        setFormat(static_cast<int>(RecordingFormat::Mp4));
    else if (!on && recordsPicture())
        setFormat(static_cast<int>(RecordingFormat::Mp3));
}

void SCMainWindow::setFormat(int index)
{
    m_ui->formatBox->setCurrentIndex(index);
    storeFormat(index);
}

/// Whoever chooses a format with a picture wants one recorded, also when the screen has been switched off.
void SCMainWindow::recordScreenForPicture()
{
    if (m_screenOn || !recordsPicture())
        return;
    setScreenOn(true);
    showMode();
}

void SCMainWindow::onScreenSwitched(bool on)
{
    m_screenshots->cancelSelections();
    fitFormatToScreen(on);
    setScreenOn(on);
    captureWholeScreen();
    setMode(CaptureMode::FullScreen);
}

void SCMainWindow::onFullScreenChosen()
{
    SCLogger::info(QStringLiteral("Select screen clicked"));
    chooseFullScreen();
}

void SCMainWindow::chooseFullScreen()
{
    m_screenshots->cancelSelections();
    setScreenOn(true);
    captureWholeScreen();
    setMode(CaptureMode::FullScreen);
}

void SCMainWindow::onRegionChosen()
{
    SCLogger::info(QStringLiteral("Select region clicked"));
    m_screenshots->cancelSelections();
    m_screenshots->cancel();
    const int format = m_ui->formatBox->currentIndex();
    m_beforeSelection = {m_screenOn, format, format, m_captureArea.mode()};
    setScreenOn(true);
    m_beforeSelection.formatMeanwhile = m_ui->formatBox->currentIndex();
    setMode(CaptureMode::Region);
    m_region->select();
}

void SCMainWindow::onWindowChosen()
{
    m_screenshots->cancelSelections();
    m_screenshots->cancel();
    setScreenOn(true);
    captureWholeScreen();
    setMode(CaptureMode::Window);
    m_screenshots->selectWindow();
}

void SCMainWindow::onRatioChosen(const QString& name)
{
    if (m_ui->ratioBox->currentIndex() == 0)
        return;
    m_screenshots->cancelSelections();
    if (m_toolbar != nullptr)
        m_toolbar->hide();
    setScreenOn(true);
    setMode(CaptureMode::Region);
    const auto size = ratiopresets::physicalSize(name);
    if (!size)
        return;
    const CaptureScreen screen = primaryScreen();
    m_captureArea.setRegion(m_region->frame(ratiopresets::areaOn(screen, *size, m_region->borderWidth())), screen);
    // The preset's own numbers, which the stored area may miss by a rounding.
    m_ui->widthEdit->setText(QString::number(size->width()));
    m_ui->heightEdit->setText(QString::number(size->height()));
}

void SCMainWindow::onRegionSelected(const QRect& area)
{
    // The pointer may have been let go over the screen beside.
    m_captureArea.setRegion(frameRegion(area & primaryScreen().geometry), primaryScreen());
    applyCaptureArea();
    m_ui->ratioBox->setCurrentIndex(0);
}

/// The frame says what is recorded: it may not be as small as the area, and is then kept on the screen.
QRect SCMainWindow::frameRegion(const QRect& area)
{
    const QRect framed = m_region->frame(area);
    const QRect screen = primaryScreen().geometry;
    if (framed.size() == area.size() || screen.contains(framed))
        return framed;
    const QRect kept = keptOn(screen, framed);
    m_region->place(kept);
    return kept;
}

void SCMainWindow::onSelectionCancelled()
{
    // With another screen beside the veil, the user may have chosen a format meanwhile, which stays then.
    const bool isUntouched = m_ui->formatBox->currentIndex() == m_beforeSelection.formatMeanwhile;
    if (m_screenOn != m_beforeSelection.screenOn && isUntouched) {
        setScreenOn(m_beforeSelection.screenOn);
        setFormat(m_beforeSelection.format);
    }
    setMode(m_beforeSelection.mode);
}

void SCMainWindow::storeRegion(const QRect& framed, bool isMoving)
{
    const CaptureScreen screen = primaryScreen();
    const QRect seen = framed & screen.geometry;
    if (seen.width() >= kSmallestRegion.width() && seen.height() >= kSmallestRegion.height()) {
        m_captureArea.setRegion(framed, screen);
    } else if (!isMoving) {
        // Let go where next to nothing of it is on the screen, it could not be recorded.
        const QRect kept = keptOn(screen.geometry, framed);
        m_region->place(kept);
        m_captureArea.setRegion(kept, screen);
    }
}

void SCMainWindow::onFrameChanged(bool isMoving, const QPoint& firstPixel, const QPoint& lastPixel)
{
    SCLogger::debug(QStringLiteral("Window coords: (%1,%2) (%3,%4)")
                        .arg(firstPixel.x())
                        .arg(firstPixel.y())
                        .arg(lastPixel.x())
                        .arg(lastPixel.y()));
    const QRect framed(firstPixel, lastPixel);
    if (m_activity.isIdle()) {
        storeRegion(framed, isMoving);
    } else if (framed.size() != m_captureArea.rect().size() && !isMoving) {
        // The picture's size is settled: the frame goes back to it.
        m_region->place(m_captureArea.rect());
    } else {
        m_captureArea.moveTo(framed.topLeft());
        // First, or it would be in the picture for a moment.
        placeBar();
    }
    // A recording follows the frame while it moves; otherwise only where it comes to rest counts.
    if (isMoving == m_recordingActive)
        applyCaptureArea();
    if (!m_ui->lockButton->isChecked())
        m_ui->ratioBox->setCurrentIndex(0);
}

void SCMainWindow::onFrameConcealed(bool concealed)
{
    if (m_toolbar != nullptr)
        m_toolbar->setConcealed(concealed);
}

void SCMainWindow::onFrameClosed()
{
    // A region without its frame is not chosen any more; one that is being recorded is recorded to its end.
    if (m_activity.isIdle()) {
        chooseFullScreen();
        return;
    }
    m_frameGivenUp = true;
    m_session.cancelCountdown();
}

void SCMainWindow::onSizeLockToggled(bool locked)
{
    m_ui->lockButton->setIcon(locked ? icons::named(QStringLiteral("lock"), icons::Tone::Light)
                                     : icons::named(QStringLiteral("unlock")));
    m_region->setLockRatio(locked);
}
