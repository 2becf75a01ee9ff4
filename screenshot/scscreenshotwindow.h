// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "screenshot/screengrab.h"
#include "widgets/overlayframe.h"

#include <QColor>
#include <QList>
#include <QPainterPath>

#include <memory>

class SCScreenshot;

/// The frame over the part of the desktop that becomes a screenshot. Strokes stay until cleared, also while it is
/// hidden; those that were cleared or undone do not come back after that.
class SCScreenshotWindow : public OverlayFrame
{
    Q_OBJECT

public:
    /// @param screenshot outlives the window
    explicit SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent = nullptr);
    ~SCScreenshotWindow() override;

    /// For tests.
    void setGrabber(ScreenGrab::Grabber grabber) { m_grab->setGrabber(std::move(grabber)); }

    /// Offers to record what is under the frame. Applies to the next show().
    void setRecordable(bool recordable) { m_isRecordable = recordable; }

    /// Other windows of the program would get into the image.
    bool isCapturing() const { return m_capturing; }

public slots:
    /// Also activates the frame.
    void show();

    /// Grabs and saves what is under the frame, with the strokes. On success copies it to the clipboard and hides the
    /// frame. Processes events other than the user's; a frame that they hide takes no screenshot.
    void saveScreenshot();

    void cancelScreenshot();
    /// Toggles the pen.
    void drawOnScreenshot();
    void clearDraw();

    /// Has its tool bar inside. Applies to the next show().
    void setFullScreen(bool fullScreen) { m_fullScreen = fullScreen; }

signals:
    void screenshotSaved(QString path);
    void screenshotCancelled();
    void recordRequested();

protected:
    bool event(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
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
    void showRecordButton();
    void fitToolBar();

    QPixmap grab() const;
    void restore();

    void paintDrawing(QPainter& painter) const;
    void paintBorder(QPainter& painter) const;

    QPushButton* m_saveButton = nullptr;
    /// In the layout while it is offered.
    QPushButton* m_recordButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_drawButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    QPainterPath m_drawPath;
    QList<ColouredPath> m_paths;
    bool m_fullScreen = false;
    bool m_isRecordable = false;
    /// Without border.
    bool m_capturing = false;
    /// A dialog is open, which may be below the frame.
    bool m_isBlocked = false;
    SCScreenshot& m_screenshot;
    std::unique_ptr<ScreenGrab> m_grab;
};
