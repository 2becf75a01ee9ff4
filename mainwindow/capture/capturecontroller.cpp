// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/capturecontroller.h"

#include "app/sclogger.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/capturearea.h"
#include "mainwindow/capture/capturedesktop.h"
#include "mainwindow/capture/captureselection.h"
#include "mainwindow/capture/ratiopresets.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/screenshotsession.h"
#include "ui_scmainwindow.h"
#include "widgets/combobox.h"
#include "widgets/framegeometry.h"
#include "widgets/icons.h"

#include <utility>

#include <algorithm>
#include <initializer_list>

namespace {

/// The smallest region that the engine can record, which rounds sizes down; with a column more, since a region never
/// has the desktop's first. Logical pixels.
constexpr QSize kSmallestRegion(5, 2);

bool isRecordable(const QRect& area)
{
    return area.width() >= kSmallestRegion.width() && area.height() >= kSmallestRegion.height();
}

void debug(const char* text, std::initializer_list<int> numbers)
{
    QString message = QLatin1String(text);
    for (const int number : numbers)
        message = message.arg(number);
    SCLogger::debug(message);
}

/// Moved onto the screen as far as it fits.
QRect keptOn(const QRect& screen, const QRect& area)
{
    return {framegeometry::moved(area, {}, screen, 0), area.size()};
}

} // namespace

CaptureController::CaptureController(Ui::SCMainWindow& ui, CaptureSelection& selection, RegionOverlays& region,
                                     ScreenshotSession& screenshots, ObsWrapper& engine, const Activity& activity)
    : m_ui(ui)
    , m_selection(selection)
    , m_region(region)
    , m_screenshots(screenshots)
    , m_engine(engine)
    , m_activity(activity)
    , m_screens(*m_ui.fullScreenTile)
    , m_sizeFields(*m_ui.widthEdit, *m_ui.heightEdit, [this] { return sizeRules(); })
{
    m_ui.ratioBox->addItems(ratiopresets::names());
    prepareComboBox(*m_ui.ratioBox);
    connectControls();
    connectRegion();
}

void CaptureController::connectControls()
{
    // Not when the program sets the box back to its first entry.
    connect(m_ui.ratioBox, &QComboBox::textActivated, this, &CaptureController::choosePreset);
    connect(m_ui.screenSwitch, &SCSwitchWidget::checkedChanged, this, &CaptureController::switchScreen);
    connect(m_ui.fullScreenTile, &Tile::activated, this, &CaptureController::onFullScreenTile);
    connect(&m_screens, &ScreenChoice::chosen, this, &CaptureController::onScreenChosen);
    connect(&m_screens, &ScreenChoice::screensChanged, this, &CaptureController::onScreensChanged);
    // Several may change together, and what lies between is not the user's.
    connect(&m_screens, &ScreenChoice::screensChanged, this, &CaptureController::onScreensSettled,
            Qt::QueuedConnection);
    connect(m_ui.regionTile, &Tile::activated, this, &CaptureController::chooseRegion);
    connect(m_ui.windowTile, &Tile::activated, this, &CaptureController::chooseWindow);
    connect(m_ui.lockButton, &QPushButton::toggled, this, &CaptureController::onLockToggled);
    connect(&m_sizeFields, &SizeFields::entered, this, &CaptureController::sizeRegion);
    connect(&m_sizeFields, &SizeFields::refused, this, &CaptureController::sizeRefused);
    connect(&m_selection, &CaptureSelection::screenSwitched, &m_sizeFields, &SizeFields::setEditable);
    connect(&m_selection, &CaptureSelection::screenSwitchedByFormat, this, &CaptureController::applyWholeScreen);
}

void CaptureController::connectRegion()
{
    connect(&m_region, &RegionOverlays::regionSelected, this, &CaptureController::onRegionSelected);
    connect(&m_region, &RegionOverlays::selectionCancelled, &m_selection, &CaptureSelection::cancelRegion);
    connect(&m_region, &RegionOverlays::frameChanged, this, &CaptureController::onFrameChanged);
    connect(&m_region, &RegionOverlays::frameClosed, this, &CaptureController::onFrameClosed);
}

bool CaptureController::startEngine()
{
    const bool isStarted = m_engine.start();
    if (isStarted)
        applyCaptureArea();
    return isStarted;
}

QRect CaptureController::area() const
{
    return m_area.rectOn(screen());
}

CaptureScreen CaptureController::screen() const
{
    return m_isRegion ? m_engine.desktop().screenOf(m_area.rect()) : m_screens.screen();
}

void CaptureController::applyCaptureArea()
{
    const CaptureScreen screen = this->screen();
    const QRect& whole = screen.geometry;
    debug("Screen geometry: x=%1, y=%2, width=%3, height=%4", {whole.x(), whole.y(), whole.width(), whole.height()});
    const QRect area = m_area.rectOn(screen);
    debug("position %1 %2 %3 %4", {area.x(), area.y(), area.x() + area.width(), area.y() + area.height()});
    m_sizeFields.show(videoSize());
    if (m_engine.isRunning())
        m_isScreenListed = m_engine.setTarget(m_area, screen);
}

QSize CaptureController::videoSize() const
{
    return m_engine.videoSize(m_area, screen());
}

/// The size or position of the whole screen may have changed since the last recording.
bool CaptureController::followsScreen() const
{
    return m_area.isUnset() || hasOtherScreen();
}

bool CaptureController::hasOtherScreen() const
{
    return !m_isRegion && m_area.rect() != screen().geometry;
}

bool CaptureController::resetRecordingArea()
{
    const CaptureScreen screen = this->screen();
    if (followsScreen())
        followScreen();
    const QSize logical = m_area.rectOn(screen).size();
    debug("Recording area set to: %1x%2", {logical.width(), logical.height()});
    const QSize size = videoSize();
    m_preparedSize = size;
    m_preparedRatio = screen.devicePixelRatio;
    m_framedRatio = m_preparedRatio;
    return m_engine.resetVideo(size);
}

bool CaptureController::prepare()
{
    const bool video = m_selection.recordsVideo();
    m_engine.setSceneRendered(video);
    // Screens come and go between recordings.
    m_engine.refreshTargets();
    // An area that is applied again sets the target as well.
    const bool applied = followsScreen();
    if (!resetRecordingArea())
        return false;
    if (!applied)
        m_isScreenListed = m_engine.setTarget(m_area, screen());
    // Audio needs no screen.
    return m_isScreenListed || !video;
}

void CaptureController::settleArea()
{
    m_sizeFields.restore();
    if (m_selection.isScreenOn())
        m_screenshots.recordPickedWindow();
    m_screenshots.cancelAll();
    fitRegion();
}

/// Screens may have gone or become smaller since the area was chosen, and a preset may be no whole number of logical
/// pixels: the fields do not show the size of the video then.
void CaptureController::fitRegion()
{
    if (!recordsRegion() || m_area.isUnset())
        return;
    const QRect visible = m_engine.desktop().visiblePart(m_area.rect());
    if (visible.isEmpty()) {
        SCLogger::warning(QStringLiteral("The chosen region is on no screen any more; a whole screen is chosen"));
        captureWholeScreen();
    } else if (visible != m_area.rect()) {
        frameVisiblePart(m_area.rect());
        applyCaptureArea();
        takeRatio(videoSize());
    } else if (!m_sizeFields.shows(videoSize())) {
        applyCaptureArea();
    }
}

void CaptureController::onRecordingOver()
{
    m_preparedSize = {};
    m_engine.setSceneRendered(false);
    if (std::exchange(m_isFrameClosed, false))
        captureWholeScreen();
    else if (hasOtherScreen())
        followScreen();
}

void CaptureController::captureWholeScreen()
{
    m_screenshots.cancelPick();
    m_selection.choose(CaptureMode::FullScreen);
    applyWholeScreen();
}

void CaptureController::applyWholeScreen()
{
    emit areaChosen();
    followScreen();
    m_region.hideFrame();
    m_ui.ratioBox->setCurrentIndex(0);
}

void CaptureController::followScreen()
{
    m_isRegion = false;
    m_area.setRect(screen().geometry);
    applyCaptureArea();
    takeRatio(videoSize());
}

void CaptureController::onScreenChosen()
{
    // A recording may have begun below the menu.
    if (m_activity.isIdle())
        captureWholeScreen();
}

void CaptureController::onScreensChanged()
{
    m_engine.refreshTargets();
    if (m_activity.isIdle() && !m_isRegion)
        followScreen();
}

void CaptureController::onScreensSettled()
{
    if (m_activity.isIdle() && !m_region.isSelecting())
        keepRegion();
    m_region.positionToolBar();
    emit screensSettled();
}

bool CaptureController::isRegionOnNoScreen() const
{
    return recordsRegion() && !m_area.isUnset() && m_engine.desktop().visiblePart(m_area.rect()).isEmpty();
}

/// The screen of a region may only sleep: the region waits for it, until a recording begins.
void CaptureController::keepRegion()
{
    if (isRegionOnNoScreen()) {
        m_isFrameAway = true;
        m_region.suspendFrame();
        return;
    }
    fitRegion();
    if (!std::exchange(m_isFrameAway, false))
        return;
    // The system may have moved it to another screen.
    moveFrame(m_framed);
    if (!m_screenshots.isFraming())
        m_region.restoreFrame();
}

void CaptureController::onFullScreenTile()
{
    chooseFullScreen();
    m_screens.offer();
}

void CaptureController::chooseFullScreen()
{
    SCLogger::info(QStringLiteral("Select screen clicked"));
    captureWholeScreen();
}

void CaptureController::chooseRegion()
{
    SCLogger::info(QStringLiteral("Select region clicked"));
    m_screenshots.cancelSelections();
    m_screenshots.cancel();
    m_selection.beginRegion();
    m_region.select();
}

void CaptureController::chooseWindow()
{
    m_screenshots.cancelSelections();
    m_screenshots.cancel();
    m_selection.choose(CaptureMode::Window);
    showFrame();
    m_screenshots.pickWindow();
}

void CaptureController::choosePreset(const QString& name)
{
    m_screenshots.cancelPick();
    emit presetChosen();
    m_selection.choose(CaptureMode::Region);
    const auto size = ratiopresets::physicalSize(name);
    if (!size) {
        showFrame();
        return;
    }
    emit areaChosen();
    framePreset(*size);
    takeRatio(*size);
}

void CaptureController::framePreset(const QSize& size)
{
    const CaptureScreen screen = primaryScreen();
    const QSize video = regionsize::fitted(size, screen, m_engine.videoSteps());
    const bool fits = video == size;
    const QRect framed =
        moveFrame(fits ? ratiopresets::areaOn(screen, size, m_region.borderWidth())
                       : regionsize::around(screen.geometry, regionsize::logical(video, screen, m_engine.videoSteps()),
                                            screen.geometry));
    storeVisiblePart(framed & screen.geometry);
    frameGrownArea(framed);
    m_region.raiseFrame();
    // The preset's own numbers, from which the stored area may differ by a rounding.
    m_sizeFields.show(fits ? size : videoSize());
}

/// About the middle of what is captured, kept on its screen.
void CaptureController::sizeRegion(const QSize& typed)
{
    m_screenshots.cancelPick();
    const CaptureScreen screen = m_engine.withPixels(this->screen());
    const regionsize::Limits limits = limitsOn(screen);
    const QSize size = regionsize::logical(regionsize::nearest(typed, limits), screen, limits.steps);
    const QRect sized = regionsize::around(area(), size, screen.geometry);
    m_selection.choose(CaptureMode::Region);
    frameVisiblePart(sized);
    m_region.showFrame();
    applyCaptureArea();
    if (!isRatioLocked())
        m_ui.ratioBox->setCurrentIndex(0);
}

SizeFields::Rules CaptureController::sizeRules()
{
    const regionsize::Limits limits = limitsOn(m_engine.withPixels(screen()));
    return {limits.smallest, limits.largest, isRatioLocked() ? m_ratio : 0.0};
}

regionsize::Limits CaptureController::limitsOn(const CaptureScreen& screen)
{
    const QSize smallest = m_region.smallestArea();
    return {{toPhysicalPx(smallest.width(), screen.devicePixelRatio),
             toPhysicalPx(smallest.height(), screen.devicePixelRatio)},
            screen.wholePixels(),
            m_engine.videoSteps()};
}

bool CaptureController::isRatioLocked() const
{
    return m_ui.lockButton->isChecked();
}

void CaptureController::takeRatio(const QSize& video)
{
    m_ratio = static_cast<double>(video.width()) / std::max(video.height(), 1);
}

void CaptureController::switchScreen(bool on)
{
    m_screenshots.cancelPick();
    m_selection.switchScreen(on);
    if (on)
        applyWholeScreen();
    else
        m_region.hideFrame();
}

bool CaptureController::chooseArea(const QRect& area)
{
    if (!m_activity.mayChooseArea())
        return false;
    m_screenshots.cancelSelections();
    m_selection.choose(CaptureMode::Region);
    onRegionSelected(area);
    return true;
}

void CaptureController::onRegionSelected(const QRect& area)
{
    emit areaChosen();
    frameVisiblePart(area);
    // What is to be recorded keeps the keyboard.
    if (m_activity.isIdle())
        m_region.raiseFrame();
    else
        m_region.showFrame();
    applyCaptureArea();
    takeRatio(videoSize());
    m_ui.ratioBox->setCurrentIndex(0);
}

QRect CaptureController::moveFrame(const QRect& area)
{
    m_framed = m_region.moveFrame(area);
    return m_framed;
}

/// Gives a frame that was resized the locked ratio: the frame's own rounding, its border and the steps of the video's
/// size have changed it.
QRect CaptureController::keptAtRatio(const QRect& framed)
{
    if (!isRatioLocked() || framed.size() == m_framed.size())
        return framed;
    const CaptureScreen screen = m_engine.desktop().around(framed);
    regionsize::Limits limits = limitsOn(screen);
    limits.largest = regionsize::room(screen);
    const QSize resized(toPhysicalPx(framed.width(), screen.devicePixelRatio),
                        toPhysicalPx(framed.height(), screen.devicePixelRatio));
    const QSize size = regionsize::logical(regionsize::atRatio(resized, m_ratio, limits), screen, limits.steps);
    return moveFrame(regionsize::around(regionsize::atSettledEdges(m_framed, framed, size), size, screen.geometry));
}

/// Moves the frame around what can be recorded of the area, and stores that. A frame that grows to its smallest size is
/// kept on the screen.
void CaptureController::frameVisiblePart(const QRect& area)
{
    const QRect visible = m_engine.desktop().visiblePart(area);
    QRect framed = moveFrame(visible);
    if (framed.size() != visible.size())
        framed = moveFrame(keptOnScreen(framed));
    storeVisiblePart(framed);
    frameGrownArea(framed);
}

QRect CaptureController::keptOnScreen(const QRect& area) const
{
    return keptOn(m_engine.desktop().around(area).geometry, area);
}

bool CaptureController::storeVisiblePart(const QRect& framed)
{
    const CaptureDesktop desktop = m_engine.desktop();
    const QRect visible = desktop.visiblePart(framed);
    if (!isRecordable(visible))
        return false;
    m_area.setRegion(visible, desktop.around(framed), m_engine.videoSteps());
    m_isRegion = true;
    return true;
}

/// Moves the frame's border out of an area that has grown into it.
void CaptureController::frameGrownArea(const QRect& framed)
{
    if (!framed.contains(m_area.rect()))
        moveFrame(framed | m_area.rect());
}

void CaptureController::storeRegion(const QRect& framed, bool isMoving)
{
    m_framed = framed;
    const bool isStored = storeVisiblePart(framed);
    if (isMoving)
        return;
    if (!isStored) {
        // Released where it cannot be recorded.
        const QRect kept = moveFrame(keptOnScreen(framed));
        storeVisiblePart(kept);
        frameGrownArea(kept);
    } else if (m_engine.desktop().isCutAt(framed)) {
        frameVisiblePart(framed);
        takeRatio(videoSize());
    } else {
        frameGrownArea(framed);
    }
}

void CaptureController::onFrameChanged(bool isMoving, const QPoint& firstPixel, const QPoint& lastPixel)
{
    debug("Window coords: (%1,%2) (%3,%4)", {firstPixel.x(), firstPixel.y(), lastPixel.x(), lastPixel.y()});
    const QRect framed(firstPixel, lastPixel);
    if (m_activity.isIdle()) {
        storeRegion(isMoving ? framed : keptAtRatio(framed), isMoving);
    } else if (framed.size() != m_area.rect().size() && !isMoving) {
        // The size of the video is settled: the frame goes back to it.
        moveFrame(m_area.rect());
        m_framedRatio = m_preparedRatio;
    } else {
        m_framed = framed;
        m_area.moveTo(framed.topLeft());
        keepVideoSize(framed);
        emit areaMoved();
    }
    // A recording follows the frame while it moves; otherwise only its last position counts.
    if (isMoving == m_activity.isRecordingActive())
        applyCaptureArea();
    if (!m_ui.lockButton->isChecked())
        m_ui.ratioBox->setCurrentIndex(0);
}

/// On a screen of another scale, where the recorded pixels are another number of logical ones. The frame takes that
/// size when it is released; until then its screen counts, for the area may have most of its own size on another one.
void CaptureController::keepVideoSize(const QRect& framed)
{
    const CaptureScreen screen = m_engine.desktop().screenOf(framed);
    const double ratio = screen.devicePixelRatio;
    if (m_preparedSize.isEmpty() || (ratio == m_preparedRatio && ratio == m_framedRatio))
        return;
    m_preparedRatio = ratio;
    m_area.fitVideo(m_preparedSize, ratio);
    m_area.moveTo(keptOn(screen.geometry, m_area.rect()).topLeft());
}

void CaptureController::onFrameClosed()
{
    // A region without its frame is not chosen any more; one that is being recorded is recorded to its end.
    if (m_activity.isIdle()) {
        captureWholeScreen();
        return;
    }
    m_isFrameClosed = true;
    emit frameClosed();
}

bool CaptureController::recordsRegion() const
{
    return m_selection.isScreenOn() && m_isRegion;
}

void CaptureController::showFrame()
{
    if (recordsRegion() && !m_area.isUnset() && !m_isFrameClosed && !m_region.isFrameShown())
        m_region.showFrame();
}

void CaptureController::onLockToggled(bool locked)
{
    m_ui.lockButton->setIcon(locked ? icons::named(QStringLiteral("lock"), icons::Tone::Light)
                                    : icons::named(QStringLiteral("unlock")));
    m_region.setLockRatio(locked);
    takeRatio(ratiopresets::physicalSize(m_ui.ratioBox->currentText()).value_or(videoSize()));
}
