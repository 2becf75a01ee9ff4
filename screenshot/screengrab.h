// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPixmap>

#include <functional>

class QRect;
class QScreen;
class QWidget;

/// Grabs the desktop under a frame, without frame, tool bar and tool tips. User-interface thread.
class ScreenGrab
{
public:
    /// A rectangle of the desktop in logical pixels; null on failure.
    using Grabber = std::function<QPixmap(QScreen& screen, const QRect& onDesktop)>;

    /// Excludes both from captures where the system can. Both outlive this.
    ScreenGrab(QWidget& frame, QWidget& toolBar, const QColor& borderColor);

    void setGrabber(Grabber grabber) { m_grabber = std::move(grabber); }

    /// By the system, from every grab, strokes included.
    bool isExcluded() const { return m_isExcluded; }

    /// Hides tool bar and tool tips over the frame, and waits a second at most until they and the border, which the
    /// frame no longer paints, are off the screen. Processes events other than the user's.
    void clearView(bool isCompositing);

    /// Null on failure.
    QPixmap grab() const;

private:
    bool hideOverFrame();
    bool isBorderVisible() const;
    QScreen* screen() const;

    QWidget& m_frame;
    QWidget& m_toolBar;
    QColor m_borderColor;
    Grabber m_grabber;
    bool m_isExcluded;
};
