// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "overlays/pickingdesktop.h"

#include <QRect>
#include <QWidget>

#include <memory>

class QKeyEvent;
class QTimer;

/// Lets the user pick a window: lays a red rectangle over the deepest window under the mouse and reports a click, which
/// the window also gets. Without a mouse, while somebody receives that and a window of this program has the keyboard,
/// Tab and the arrow keys lead from window to window, and Enter is the click. Ctrl+Shift+H shows and hides it, Escape
/// cancels it. A second instance ends the program, and so does a failing mouse hook. Without a compositor it is cut to
/// its outline. User-interface thread.
class WindowHighlighter : public QWidget
{
    Q_OBJECT

public:
    explicit WindowHighlighter(QWidget* parent = nullptr);
    explicit WindowHighlighter(std::unique_ptr<PickingDesktop> desktop, QWidget* parent = nullptr);
    ~WindowHighlighter() override;

    /// Highlights nothing before the mouse moves.
    void setVisible(bool visible) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// The one that was under the pointer last; 0 without one.
    platform::NativeWindow hoveredWindow() const { return m_hoveredWindow; }

    /// Physical to logical pixels on a screen with that top-left corner, which is the same in both. Rounds to nearest,
    /// halves away from zero.
    static QRect logicalRect(const QRect& physical, const QPoint& screenOrigin, double devicePixelRatio);
    /// On the screen with the top-left corner, else the primary one.
    static QRect logicalRectOnItsScreen(const QRect& physical);

signals:
    /// Of the picked window, in physical pixels of the desktop.
    void windowClicked(QRect rect);

    /// By Escape; it is hidden.
    void cancelled();

protected:
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void installHook();
    void onMouse(platform::MouseHook::Event event, const QPoint& position);
    void onClick(platform::MouseHook::Event event, const QPoint& position);
    void takeKeys(bool taken);
    bool onKey(const QKeyEvent& key);
    void highlightNext(bool forwards);
    void pickHighlighted();
    void onTimer();
    void cancel();
    void hover(platform::NativeWindow window);
    void hoverNothing();
    void reposition();
    void cutOut();
    void openMenu(const QPoint& position);
    void showWindowInformation();

    platform::NativeWindow m_hoveredWindow = 0;
    std::unique_ptr<PickingDesktop> m_desktop;
    QTimer* m_updateTimer;

    static WindowHighlighter* s_instance;
};
