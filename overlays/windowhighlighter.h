#pragma once

#include "overlays/pickingdesktop.h"

#include <QRect>
#include <QWidget>

#include <memory>

class QTimer;

/// Lets the user pick a window by pointing at it. While it is visible it lays a red frame over the deepest window under
/// the mouse, wherever on the desktop, and reports that window's rectangle when the left or the right button is
/// pressed; the click reaches the window as well. Ctrl+Shift+H shows and hides it from anywhere.
///
/// One lives at a time (a second one ends the program), from start to exit; it starts hidden. If the mouse cannot be
/// followed, the user is told and the program ends. It never takes the mouse or the keyboard focus.
///
/// Where no compositor mixes its tint with the window below, it is cut down to its outline. User-interface thread.
class WindowHighlighter : public QWidget
{
    Q_OBJECT

public:
    explicit WindowHighlighter(QWidget* parent = nullptr);
    explicit WindowHighlighter(std::unique_ptr<PickingDesktop> desktop, QWidget* parent = nullptr);
    ~WindowHighlighter() override;

    /// Shown, it waits for the mouse to move: it frames nothing that was below the mouse some time ago.
    void setVisible(bool visible) override;

    /// Logical pixels of the toolkit for a rectangle in physical pixels, on a screen that begins at screenOrigin (where
    /// the two meet) with that device pixel ratio. Each value is rounded to the nearest, halves away from zero.
    static QRect logicalRect(const QRect& physical, const QPoint& screenOrigin, double devicePixelRatio);
    /// The same on the screen that has the rectangle's top-left corner; the primary one where none has it.
    static QRect logicalRectOnItsScreen(const QRect& physical);

signals:
    /// A mouse button was pressed over the framed window: its frame rectangle in physical pixels of the desktop, not
    /// divided by the device pixel ratio. Who picks a window hides the highlighter then.
    void windowClicked(QRect rect);

protected:
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void installHook();
    void onMouse(platform::MouseHook::Event event, const QPoint& position);
    void onClick(platform::MouseHook::Event event, const QPoint& position);
    void onTimer();
    void reposition();
    void cutOut();
    void openMenu(const QPoint& position);
    void showWindowInformation();

    platform::NativeWindow m_hoveredWindow = 0;
    std::unique_ptr<PickingDesktop> m_desktop;
    QTimer* m_updateTimer;

    static WindowHighlighter* s_instance;
};
