#pragma once

#include "platform/windowing/window_opening.h"
#include "widgets/framegeometry.h"

#include <QColor>
#include <QList>
#include <QPainterPath>
#include <QPixmap>
#include <QPoint>
#include <QPolygonF>
#include <QRect>
#include <QRegion>
#include <QWidget>

#include <functional>
#include <memory>

class QPushButton;
class QScreen;
class SCScreenshot;

/// The see-through frame over the part of the desktop that becomes a screenshot: its own geometry is what is grabbed.
/// The user resizes it by edges and corners, moves it by its tool bar, may draw on what is inside, and captures with
/// the tool bar or the enter key. What lies below is seen, and reached by the pointer, except while the pen is on.
///
/// The tool bar is a window of its own that follows the frame, so the frame has to be shown and hidden with show() and
/// hide() of this class. What is drawn stays, also while the frame is hidden, until it is cleared. All coordinates are
/// logical pixels of the desktop; the picture has physical ones.
class SCScreenshotWindow : public QWidget
{
    Q_OBJECT

public:
    /// Takes the picture of a rectangle of the desktop off a screen, null where it cannot.
    using Grabber = std::function<QPixmap(QScreen& screen, const QRect& onDesktop)>;

    /// @param screenshot saves what is captured; must outlive the window.
    explicit SCScreenshotWindow(SCScreenshot* screenshot, QWidget* parent = nullptr);
    ~SCScreenshotWindow() override;

    /// Takes pictures by other means than the system's own, for one who has no screen.
    void setGrabber(Grabber grabber) { m_grabber = std::move(grabber); }

    /// Whether a shot is being taken: what is shown over the desktop meanwhile would get into it.
    bool isCapturing() const { return m_capturing; }

public slots:
    /// Hides the frame with its tool bar. Emits nothing.
    void hide();

    /// Shows the frame with its tool bar, which takes its place, and gives it the keyboard.
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
    void clearDraw();

    /// Whether the frame is a whole screen's, whose tool bar stands inside it; for the next show().
    void setFullScreen(bool fullScreen) { m_fullScreen = fullScreen; }

signals:
    void screenshotSaved(QString path);
    void screenshotCancelled();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// A line of its own colour and width.
    struct ColouredPath
    {
        QPainterPath path;
        QColor color;
        int widthPx;
    };

    void buildToolBar();
    QPushButton* addButton(const char* name, const char* icon);
    void loadStyleSheet();
    void retranslate();
    void setButtonsVisible(bool visible);
    void placeToolBar();
    QPoint toolBarPlace() const;
    bool filterToolBar(const QMouseEvent& event);
    void showHoverIcon(QObject& button, bool hovered);

    framegeometry::HitArea hitAreaAt(const QPoint& place) const;
    void drag(const QPoint& cursor);
    void endStroke(const QPointF& place);

    bool clearTheView();
    void waitUntilUnseen(bool hadMore);
    bool isBorderSeen() const;
    QScreen* screenOfGrab() const;
    QPixmap grab() const;
    void comeBack();

    bool takesPointer() const { return m_drawMode && !m_isBlocked; }
    QRegion paintedRegion() const;
    void updateOpening();
    void paintMixed(QPainter& painter) const;
    void paintCut(QPainter& painter) const;
    void paintBorder(QPainter& painter) const;
    void paintDrawing(QPainter& painter) const;

    QPushButton* m_saveButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_drawButton = nullptr;
    QPushButton* m_clearButton = nullptr;
    std::unique_ptr<QWidget> m_toolbar;
    QPoint m_dragStartPos;
    QRect m_dragStartGeometry;
    framegeometry::HitArea m_resizeRegion = framegeometry::HitArea::None;
    bool m_pressed = false;
    bool m_fullScreen = false;
    bool m_drawMode = false;
    /// A grab is in progress: what is not to be in the picture is not painted.
    bool m_capturing = false;
    /// A dialog is open, which may lie below the frame.
    bool m_isBlocked = false;
    QColor m_penColor = Qt::red;
    int m_penWidth = 3;
    QPainterPath m_drawPath;
    QList<ColouredPath> m_paths;
    /// In window coordinates.
    QPolygonF m_currentStroke;
    QList<QPolygonF> m_strokes;
    SCScreenshot& m_screenshot;
    Grabber m_grabber;
    /// The system leaves frame and tool bar out of every grab, and with the frame what was drawn.
    bool m_isExcluded = false;
    /// Whether the system mixed the window with what lies below it when it was last asked.
    bool m_isCompositing = true;
    platform::WindowOpening m_opening;
};
