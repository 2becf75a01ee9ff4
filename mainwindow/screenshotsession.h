// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

#include <memory>

class Activity;
class QTimer;
class QWidget;
class RegionOverlays;
class RegionSelection;
class SCScreenshot;
class SCScreenshotWindow;
class WindowHighlighter;

/// Screenshots, from the choice of what is shot to the saved file. The selectors and the frame lie over the desktop one
/// at a time; the main window and the region's frame are off the screen while a region is selected and while the
/// screenshot's frame is shown. Rectangles are logical pixels of the desktop. User-interface thread.
class ScreenshotSession : public QObject
{
    Q_OBJECT

public:
    /// Belongs to window. @param windowGoneMs how long a minimised window may still be seen
    ScreenshotSession(QWidget* window, RegionOverlays& region, const Activity& activity, int windowGoneMs);
    ~ScreenshotSession() override;

    /// Cancels whatever is selected on the desktop, for a recording or a screenshot, except a screenshot's region.
    void cancelSelections();

    /// Takes everything of a screenshot off the desktop.
    void cancel();

    bool isActive() const;

    /// Whether a shot is being taken, which runs events meanwhile.
    bool isGrabbing() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    // Each is ignored, with a line in the log, while no screenshot may be taken.

    /// Shows the frame over the whole primary screen.
    void frameScreen();
    /// Lets the user drag out a region, and frames it.
    void selectRegion();
    /// Lets the user pick a window, and frames what the screens show of it.
    void selectWindow();
    /// The same without asking whether a screenshot may be taken, and without ending what is under way.
    void pickWindow();

signals:
    /// The main window was minimised for the screenshot.
    void restoreRequested();
    void saved(const QString& path);

private:
    bool isAllowed() const;
    SCScreenshotWindow& frame();
    void begin();
    void end();
    void stopPicking();
    void onWindowPicked(const QRect& physical);
    void frameArea(const QRect& area);
    void showFrame(const QRect& area, bool fullScreen);
    void activateFrame();
    void onFailed(const QString& message);

    QWidget& m_window;
    RegionOverlays& m_region;
    const Activity& m_activity;
    std::unique_ptr<WindowHighlighter> m_picker;
    SCScreenshot* m_screenshot;
    RegionSelection* m_selection;
    QTimer* m_selectorDelay;
    QTimer* m_activationDelay;
    std::unique_ptr<SCScreenshotWindow> m_frame;
    bool m_isActive = false;
    bool m_isChanging = false;
    bool m_minimisedWindow = false;
};
