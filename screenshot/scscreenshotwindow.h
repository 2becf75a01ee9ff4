#pragma once

#include "screenshot/screengrab.h"
#include "widgets/overlayframe.h"

#include <memory>

class SCScreenshot;

/// The frame over the part of the desktop that becomes a screenshot: its own geometry is what is grabbed, in physical
/// pixels. The user captures with the tool bar or the enter key. What is drawn stays until it is cleared, also while
/// the frame is hidden.
class SCScreenshotWindow : public OverlayFrame
{
    Q_OBJECT

public:
    /// @param screenshot saves what is captured; must outlive the window.
    explicit SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent = nullptr);
    ~SCScreenshotWindow() override;

    /// Replaces the system's grab. For tests.
    void setGrabber(ScreenGrab::Grabber grabber) { m_grab->setGrabber(std::move(grabber)); }

    /// Whether a shot is being taken: what is shown over the desktop meanwhile would get into it.
    bool isCapturing() const { return m_capturing; }

public slots:
    /// Gives the frame the keyboard, too.
    void show();

    /// Grabs the screen under the frame, without frame and tool bar and with what was drawn, and has it saved. On
    /// success the frame is hidden and screenshotSaved() tells the file; otherwise it stays. It runs events other than
    /// the user's meanwhile; a frame that they hide takes no shot.
    void saveScreenshot();

    /// Gives the shot up: tells it and hides the frame.
    void cancelScreenshot();

    /// Takes the pen up, or puts it down.
    void drawOnScreenshot();

    /// Removes all that was drawn; the pen stays as it is.
    void clearDraw() { clearStrokes(); }

    /// Whether the frame is a whole screen's, whose tool bar stands inside it; for the next show().
    void setFullScreen(bool fullScreen) { m_fullScreen = fullScreen; }

signals:
    void screenshotSaved(QString path);
    void screenshotCancelled();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

    void retranslate() override;
    void positionToolBar() override;
    framegeometry::HitArea handleAt(const QPoint& position) const override;
    void drag(framegeometry::HitArea area, const QRect& start, const QPoint& delta) override;
    bool takesPointer() const override { return isDrawMode() && !m_isBlocked; }
    bool isBorderVisible() const override { return !m_capturing; }
    int borderDepthPx() const override;
    void paintMixed(QPainter& painter) const override;

private:
    void buildToolBar();
    QPoint toolBarPosition() const;

    QPixmap grab() const;
    void comeBack();

    void paintBorder(QPainter& painter) const;

    QPushButton* m_saveButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_drawButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    bool m_fullScreen = false;
    /// A grab is in progress: what is not to be in the picture is not painted.
    bool m_capturing = false;
    /// A dialog is open, which may lie below the frame.
    bool m_isBlocked = false;
    SCScreenshot& m_screenshot;
    std::unique_ptr<ScreenGrab> m_grab;
};
