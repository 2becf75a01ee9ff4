// Screenshots: their tiles, and the main window out of the way while one is taken.

#include "app/sclogger.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/screenshotsession.h"
#include "overlays/windowhighlighter.h"
#include "ui_scmainwindow.h"
#include "widgets/messagebox.h"

#include <utility>

void SCMainWindow::connectScreenshots()
{
    connect(m_screenshots, &ScreenshotSession::began, this, &SCMainWindow::onScreenshotBegan);
    connect(m_screenshots, &ScreenshotSession::ended, this, &SCMainWindow::onScreenshotEnded);
    connect(m_screenshots, &ScreenshotSession::saved, this, &SCMainWindow::onScreenshotSaved);
    connect(m_screenshots, &ScreenshotSession::failed, this, &SCMainWindow::onScreenshotFailed);
}

/// The frame would be in a recording, and a dialog in the shot.
bool SCMainWindow::screenshotIsAllowed() const
{
    const bool may = m_activity.mayTakeScreenshot();
    if (!may)
        SCLogger::info(
            QStringLiteral("Screenshot request ignored: a recording or a shot is under way, or a dialog open"));
    return may;
}

/// One thing is picked at a time, whatever for.
void SCMainWindow::giveUpPicking()
{
    m_region->cancelSelection();
    stopPickingWindow();
}

/// The tile's and the hotkey's wish.
void SCMainWindow::onScreenshotFullScreenChosen()
{
    if (!screenshotIsAllowed())
        return;
    giveUpPicking();
    m_screenshots->frameScreen();
}

void SCMainWindow::onScreenshotRegionChosen()
{
    if (!screenshotIsAllowed())
        return;
    giveUpPicking();
    m_screenshots->selectRegion();
}

void SCMainWindow::onScreenshotWindowChosen()
{
    if (!screenshotIsAllowed())
        return;
    giveUpPicking();
    m_screenshots->giveUp();
    pickWindow();
}

void SCMainWindow::onScreenshotBegan()
{
    m_region->setFrameAside();
    m_minimisedForScreenshot = isVisible() && !isMinimized();
    if (m_minimisedForScreenshot)
        showMinimized();
}

void SCMainWindow::onScreenshotEnded()
{
    // A recording that has begun meanwhile has its own use for window and frame.
    if (m_activity.mayRestoreRegionFrame())
        m_region->bringFrameBack();
    if (m_activity.isIdle() && std::exchange(m_minimisedForScreenshot, false))
        restoreWindow();
}

void SCMainWindow::onScreenshotSaved(const QString& path)
{
    emit fileProduced(path, QStringLiteral("screenshot"));
    restoreWindow();
    messagebox::information(this, tr("Screenshot Saved"), tr("Screenshot saved to: %1").arg(path));
    showScreenshots();
}

void SCMainWindow::onScreenshotFailed(const QString& message)
{
    SCLogger::error(QStringLiteral("Screenshot error: %1").arg(message));
    messagebox::warning(isMinimized() ? nullptr : this, tr("Screenshot Error"),
                        tr("Screenshot error: %1").arg(message));
}
