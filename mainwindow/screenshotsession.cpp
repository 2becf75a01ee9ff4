// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/screenshotsession.h"

#include "app/sclogger.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/capture/regionselection.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshot.h"
#include "screenshot/scscreenshotwindow.h"
#include "widgets/framegeometry.h"
#include "widgets/messagebox.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>

#include <utility>

namespace {

/// Without what lies beyond all screens, where a shot would be black. On Windows the borders of a maximised window
/// reach there.
QRect visiblePart(const QRect& area)
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    const QRect visible = screen == nullptr ? area : area & screen->virtualGeometry();
    return visible.isEmpty() ? area : visible;
}

} // namespace

ScreenshotSession::ScreenshotSession(QWidget* window, RegionOverlays& region, const Activity& activity,
                                     int windowGoneMs)
    : QObject(window)
    , m_window(*window)
    , m_region(region)
    , m_activity(activity)
    , m_picker(std::make_unique<WindowHighlighter>(PickingDesktop::ofOtherPrograms()))
    , m_screenshot(new SCScreenshot(this))
    , m_selection(new RegionSelection(this))
    , m_selectorDelay(new QTimer(this))
    , m_activationDelay(new QTimer(this))
{
    for (QTimer* const timer : {m_selectorDelay, m_activationDelay}) {
        timer->setSingleShot(true);
        timer->setInterval(windowGoneMs);
    }
    // What is minimised must not be in the image behind the selector.
    connect(m_selectorDelay, &QTimer::timeout, m_selection, &RegionSelection::begin);
    // The window manager gives the focus of a minimised window to another program.
    connect(m_activationDelay, &QTimer::timeout, this, &ScreenshotSession::activateFrame);
    connect(m_picker.get(), &WindowHighlighter::cancelled, this, &ScreenshotSession::stopPicking);
    connect(m_screenshot, &SCScreenshot::error, this, &ScreenshotSession::onFailed);
    connect(m_screenshot, &SCScreenshot::folderReplaced, this, &ScreenshotSession::folderReplaced);
    connect(m_selection, &RegionSelection::selected, this, &ScreenshotSession::frameArea);
    connect(m_selection, &RegionSelection::cancelled, this, &ScreenshotSession::end);
}

ScreenshotSession::~ScreenshotSession()
{
    // The frame hides as it is destroyed, which must not end anything any more.
    m_isActive = false;
}

SCScreenshotWindow& ScreenshotSession::frame()
{
    if (m_frame == nullptr) {
        m_frame = std::make_unique<SCScreenshotWindow>(m_screenshot);
        m_frame->installEventFilter(this);
        connect(m_frame.get(), &SCScreenshotWindow::screenshotSaved, this, &ScreenshotSession::saved);
        connect(m_frame.get(), &SCScreenshotWindow::recordRequested, this, &ScreenshotSession::onRecordRequested);
    }
    return *m_frame;
}

/// The frame would be in a recording.
bool ScreenshotSession::isAllowed() const
{
    const bool isAllowed = m_activity.mayTakeScreenshot();
    if (!isAllowed)
        SCLogger::info(QStringLiteral("Screenshot request ignored: a recording or a shot is under way"));
    return isAllowed;
}

void ScreenshotSession::begin()
{
    const bool wasActive = std::exchange(m_isActive, true);
    // Dialogs may have been opened since the last time.
    emit activeChanged();
    if (wasActive)
        return;
    m_region.suspendFrame();
    m_minimisedWindow = m_window.isVisible() && !m_window.isMinimized();
    if (m_minimisedWindow)
        m_window.showMinimized();
}

void ScreenshotSession::end()
{
    if (m_isChanging || !std::exchange(m_isActive, false))
        return;
    // A recording that has begun meanwhile has its own use for window and frame.
    if (m_activity.mayRestoreRegionFrame())
        m_region.restoreFrame();
    if (m_activity.isIdle() && std::exchange(m_minimisedWindow, false))
        emit restoreRequested();
    emit activeChanged();
}

bool ScreenshotSession::isActive() const
{
    return m_isActive || m_picker->isVisible();
}

bool ScreenshotSession::isGrabbing() const
{
    return m_frame != nullptr && m_frame->isCapturing();
}

void ScreenshotSession::cancelSelections()
{
    m_region.cancelSelection();
    stopPicking();
}

void ScreenshotSession::cancel()
{
    m_selectorDelay->stop();
    m_selection->cancel();
    if (m_frame != nullptr)
        m_frame->hide();
    end();
}

void ScreenshotSession::cancelAll()
{
    cancel();
    cancelSelections();
}

void ScreenshotSession::frameScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!isAllowed() || screen == nullptr)
        return;
    cancelSelections();
    const QScopedValueRollback<bool> changing(m_isChanging, true);
    m_selectorDelay->stop();
    m_selection->cancel();
    m_picked.reset();
    showFrame(screen->geometry(), true);
}

void ScreenshotSession::selectRegion()
{
    if (!isAllowed())
        return;
    cancelSelections();
    const QScopedValueRollback<bool> changing(m_isChanging, true);
    begin();
    m_picked.reset();
    // It would take the presses that are meant for the selector.
    if (m_frame != nullptr)
        m_frame->hide();
    m_selectorDelay->start();
}

void ScreenshotSession::selectWindow()
{
    if (!isAllowed())
        return;
    cancelSelections();
    cancel();
    pickWindow();
    m_picksToRecord = false;
}

void ScreenshotSession::pickWindow()
{
    connect(m_picker.get(), &WindowHighlighter::windowClicked, this, &ScreenshotSession::onWindowPicked,
            Qt::UniqueConnection);
    m_picksToRecord = true;
    m_picker->show();
}

void ScreenshotSession::stopPicking()
{
    disconnect(m_picker.get(), &WindowHighlighter::windowClicked, this, &ScreenshotSession::onWindowPicked);
    m_picker->hide();
}

void ScreenshotSession::onWindowPicked(const QRect& physical)
{
    stopPicking();
    if (!isAllowed())
        return;
    m_picked = PickedWindow::holding(m_picker->hoveredWindow());
    frameArea(WindowHighlighter::logicalRectOnItsScreen(physical));
}

void ScreenshotSession::onRecordRequested()
{
    const std::optional<PickedWindow> window = std::exchange(m_picked, std::nullopt);
    const QRect area = m_frame->geometry();
    m_frame->hide();
    if (window)
        emit recordRequested(area, *window);
}

bool ScreenshotSession::isPickFramed() const
{
    return m_picksToRecord && m_picked && m_frame->isVisible();
}

void ScreenshotSession::cancelPick()
{
    cancelSelections();
    if (isPickFramed())
        cancel();
}

void ScreenshotSession::recordPickedWindow()
{
    if (isPickFramed())
        onRecordRequested();
}

void ScreenshotSession::frameArea(const QRect& area)
{
    const QRect visible = visiblePart(area);
    const QRect grown(visible.topLeft(), visible.size().expandedTo(frame().minimumSize()));
    const QScreen* const screen = QGuiApplication::screenAt(visible.center());
    const bool fits = grown == visible || screen == nullptr;
    showFrame(fits ? grown : QRect(framegeometry::moved(grown, {}, screen->geometry(), 0), grown.size()), false);
}

void ScreenshotSession::showFrame(const QRect& area, bool fullScreen)
{
    begin();
    frame().positionAt(area);
    frame().setFullScreen(fullScreen);
    frame().setRecordable(m_picked.has_value());
    frame().show();
    m_activationDelay->start();
}

void ScreenshotSession::activateFrame()
{
    if (m_frame->isVisible())
        m_frame->activateWindow();
}

void ScreenshotSession::onFailed(const QString& message)
{
    SCLogger::error(QStringLiteral("Screenshot error: %1").arg(message));
    messagebox::warning(m_window.isMinimized() ? nullptr : &m_window, tr("Screenshot Error"),
                        tr("Screenshot error: %1").arg(message));
}

bool ScreenshotSession::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_frame.get() && event->type() == QEvent::Hide && !event->spontaneous())
        end();
    return false;
}
