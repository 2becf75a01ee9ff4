// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "screenshot/screengrab.h"
#include "widgets/overlayframe.h"

#include <QColor>
#include <QList>
#include <QPainterPath>

#include <memory>

class SCScreenshot;

/// The frame over the part of the desktop that becomes a screenshot: the frame's geometry, in physical pixels. Strokes
/// stay until they are cleared, also while the frame is hidden.
class SCScreenshotWindow : public OverlayFrame
{
    Q_OBJECT

public:
    /// @param screenshot saves the image; outlives the window.
    explicit SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent = nullptr);
    ~SCScreenshotWindow() override;

    /// Replaces the system's grab. For tests.
    void setGrabber(ScreenGrab::Grabber grabber) { m_grab->setGrabber(std::move(grabber)); }

    /// Other windows of the program would get into the image meanwhile.
    bool isCapturing() const { return m_capturing; }

public slots:
    /// Activates the frame, too.
    void show();

    /// Grabs what is under the frame, with the strokes, and saves it. On success the frame is hidden and
    /// screenshotSaved() emitted. Processes events other than the user's; a frame that they hide takes no screenshot.
    void saveScreenshot();

    void cancelScreenshot();
    /// Toggles the pen.
    void drawOnScreenshot();
    void clearDraw();

    /// The tool bar of a full-screen frame is inside it. Applies to the next show().
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
    struct ColouredPath
    {
        QPainterPath path;
        QColor color;
        int widthPx;
    };

    void buildToolBar();
    QPoint toolBarPosition() const;

    QPixmap grab() const;
    void restore();

    void paintDrawing(QPainter& painter) const;
    void paintBorder(QPainter& painter) const;

    QPushButton* m_saveButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_drawButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPainterPath m_drawPath;
    QList<ColouredPath> m_paths;
    bool m_fullScreen = false;
    /// The border is not painted.
    bool m_capturing = false;
    /// A dialog is open, which may lie below the frame.
    bool m_isBlocked = false;
    SCScreenshot& m_screenshot;
    std::unique_ptr<ScreenGrab> m_grab;
};
