// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/scmainwindow.h"
#include "overlays/drawwindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/shownwindow.h"

#include <QObject>
#include <QRect>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class MessageCapture;
class QPushButton;

/// What the tests share that choose a region in the main window: each test function has a window of its own, on a
/// backdrop of one colour. The desktop is larger than the largest ratio preset with its bar.
class RegionTest : public QObject
{
    Q_OBJECT

protected:
    static constexpr QRgb kBackdrop = qRgb(10, 200, 30);
    static constexpr QRgb kBorder = qRgb(0x00, 0x7a, 0xcc);
    static constexpr int kBorderPx = 4;
    /// On the primary screen, beside the main window and at whole physical pixels at all scales of the tests.
    static constexpr QRect kRegion{900, 120, 320, 240};

    /// The region on the desktop.
    static QRect region();
    /// The area with the frame's border.
    static QRect framed(const QRect& area);
    static bool isLike(QRgb seen, QRgb expected);

    /// The frame's border is seen around the area; empty when it is so.
    static QString wrongInTheBorder(const QRect& area);
    /// The border is seen, and through the frame what lies below; empty when it is so.
    static QString wrongInTheFrame(const QRect& area);

    /// A region can be dragged out, and the keyboard cancels it.
    static bool isVeilActive();
    /// Drags the region out, from its top left to its bottom right.
    void dragRegion() const;
    /// Chooses an entry of the ratio box.
    void choosePreset(const QString& name) const;

    /// Looks at what there is during the next countdown, which runs within the event that starts it, and cancels it.
    void duringTheCountdown(const std::function<void()>& look);
    /// The countdown that was looked at is gone, without having come to its end, and the window is back.
    bool isCancelled(const MessageCapture& messages) const;

    template <typename Widget>
    Widget* child(const QString& name) const
    {
        return m_window->findChild<Widget*>(name);
    }

    /// The frame, while it is shown.
    static DrawWindow* frame() { return shownWindow<DrawWindow>(); }
    /// A button of the frame's tool bar.
    static QPushButton* barButton(const char* name);

    QString field(const char* name) const;
    /// The fields show what the area is in physical pixels.
    void expectFields(const QSize& logical) const;
    /// The area last applied, its second corner one past the last pixel.
    static void expectPosition(const MessageCapture& messages, const QRect& area);
    QStringList selectedTiles() const;

    std::unique_ptr<SCMainWindow> m_window;

private slots:
    void initTestCase();
    void init();
    void cleanup();

private:
    QWidget m_backdrop;
    bool m_hasLooked = false;
};
