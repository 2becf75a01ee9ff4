// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/pickedwindow.h"

#include <QObject>
#include <QRect>

#include <memory>
#include <optional>

class Activity;
class QTimer;
class QWidget;
class RegionOverlays;
class RegionSelection;
class SCScreenshot;
class SCScreenshotWindow;
class WindowHighlighter;

/// A screenshot from its selection to the saved file. Selectors and frame appear one at a time. While a region is
/// selected or the frame is shown, the main window is minimised and the region frame hidden. Logical pixels of the
/// desktop. User-interface thread.
class ScreenshotSession : public QObject
{
    Q_OBJECT

public:
    /// Belongs to window. @param windowGoneMs how long a minimised window may still be visible
    ScreenshotSession(QWidget* window, RegionOverlays& region, const Activity& activity, int windowGoneMs);
    ~ScreenshotSession() override;

    /// Cancels every selection except a screenshot's region.
    void cancelSelections();

    void cancel();
    void cancelAll();

    /// For another choice on the recording page: cancels selections, and a frame over a window that was picked there.
    void cancelPick();

    /// Does what the button "Record" does, where the frame is over a window that was picked on the recording page.
    void recordPickedWindow();

    bool isActive() const;

    /// Active, but for the picking of a window.
    bool isFraming() const { return m_isActive; }

    /// Whether an image is being taken, during which events run.
    bool isGrabbing() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    // Except pickWindow() logged and ignored while no screenshot may be taken.

    /// Shows the frame over the whole primary screen.
    void frameScreen();
    void selectRegion();
    void selectWindow();
    /// For the recording page's tile: does not ask whether a screenshot may be taken, nor end what is under way.
    void pickWindow();

signals:
    void restoreRequested();
    /// isFraming() may have, or a shown frame has another area.
    void activeChanged();
    void saved(const QString& path);
    /// The frame over a picked window has closed.
    void recordRequested(const QRect& area, const PickedWindow& window);
    void folderReplaced();

private:
    bool isAllowed() const;
    /// For the recording page.
    bool isPickFramed() const;
    SCScreenshotWindow& frame();
    void begin();
    void end();
    void stopPicking();
    void onWindowPicked(const QRect& physical);
    void onRecordRequested();
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
    /// None while the frame is over another area.
    std::optional<PickedWindow> m_picked;
    bool m_picksToRecord = false;
    bool m_isChanging = false;
    bool m_minimisedWindow = false;
};
