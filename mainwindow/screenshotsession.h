#pragma once

#include "mainwindow/durations.h"

#include <QObject>
#include <QRect>

#include <memory>

class QTimer;
class RegionSelection;
class SCScreenshot;
class SCScreenshotWindow;

/// The road of a screenshot: what is to be shot, the frame over it, and the file. It shows no message; it reports.
/// Rectangles are logical pixels of the desktop. User-interface thread.
///
/// Between began() and ended() something of it lies over the desktop. No function that lays something over it may be
/// called while a shot is being taken.
class ScreenshotSession : public QObject
{
    Q_OBJECT

public:
    explicit ScreenshotSession(QObject* parent, int windowGoneMs = Durations().windowGoneMs);
    ~ScreenshotSession() override;

    /// Lays the frame over the whole primary screen.
    void frameScreen();

    /// Lets the user drag out a region and lays the frame over it. The selector comes a moment later, so that what has
    /// been taken off the screen for it is not in the picture behind it.
    void selectRegion();

    /// Lays the frame over what the screens show of an area, or more where that is smaller than a frame can be.
    void frameArea(const QRect& area);

    /// Takes everything off the desktop, without a shot.
    void giveUp();

    bool isActive() const { return m_isActive; }
    /// Whether a shot is being taken, which runs events meanwhile.
    bool isGrabbing() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The desktop is about to be covered: whatever is not to be in the picture has to go.
    void began();

    /// The desktop is free again, with a shot or without.
    void ended();

    /// The file was written; after ended().
    void saved(const QString& path);

    /// A file could not be written; the frame stays. The text is for the user.
    void failed(const QString& message);

private:
    SCScreenshotWindow& window();
    void begin();
    void end();
    void showFrame(const QRect& area, bool fullScreen);
    void takeKeyboard();

    SCScreenshot* m_screenshot;
    RegionSelection* m_selection;
    QTimer* m_selectorDelay;
    QTimer* m_keyboard;
    /// Made when it is first needed.
    std::unique_ptr<SCScreenshotWindow> m_window;
    bool m_isActive = false;
    /// One thing over the desktop gives way to another.
    bool m_isChanging = false;
};
