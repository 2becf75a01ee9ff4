// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mainwindow/scmainwindow.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/shownwindow.h"
#include "tests/support/stillimage.h"
#include "widgets/messagebox.h"

#include <QImage>
#include <QObject>
#include <QRect>
#include <QSignalSpy>

#include <memory>

class QPushButton;

/// What the tests share that take screenshots: a desktop of which each pixel shows its position, and for each test
/// function a main window on its screenshot page.
class ScreenshotTest : public QObject
{
    Q_OBJECT

protected:
    /// The frame of the shot, while it is shown.
    static SCScreenshotWindow* frame() { return shownWindow<SCScreenshotWindow>(); }
    static QWidget& bar();
    static QPushButton& barButton(const char* name);

    /// On the desktop, at whole physical pixels at the scales of the tests, and beside the main window.
    static QRect region();
    /// The pixels of the display that a rectangle of the desktop covers.
    static QRect pixels(const QRect& area);
    /// Of two images' greys.
    static int largestDifference(const QImage& one, const QImage& other);

    void clickTile(const char* name) const;
    /// Chooses the region with the pointer; its frame is shown and has the keyboard.
    void dragRegion() const;
    /// The window manager may have other ideas about the keyboard.
    void waitForTheKeyboard() const;
    /// A PNG file was written and reported, and it is just what the desktop shows there.
    void expectShot(const QRect& covered) const;

    QImage m_desktop;
    std::unique_ptr<messagebox::Recorder> m_boxes;
    std::unique_ptr<SCMainWindow> m_window;
    std::unique_ptr<QSignalSpy> m_produced;

private slots:
    void initTestCase();
    void init();
    void cleanup();

private:
    std::unique_ptr<StillImage> m_stillImage;
};
