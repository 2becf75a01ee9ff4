#pragma once

#include <QColor>
#include <QPixmap>

#include <functional>

class QRect;
class QScreen;
class QWidget;

/// Grabs the part of the desktop under a frame, without the frame, its tool bar and tool tips. User-interface thread.
class ScreenGrab
{
public:
    /// Grabs a rectangle of the desktop (logical pixels) from a screen, in physical pixels. Null on failure.
    using Grabber = std::function<QPixmap(QScreen& screen, const QRect& onDesktop)>;

    /// Excludes frame and tool bar from captures where the system can. Both outlive this.
    ScreenGrab(QWidget& frame, QWidget& toolBar, const QColor& borderColor);

    void setGrabber(Grabber grabber) { m_grabber = std::move(grabber); }

    /// Whether the system leaves frame and tool bar out of every grab, and with the frame what is drawn on it.
    bool isExcluded() const { return m_isExcluded; }

    /// Hides the tool bar and tool tips over the frame, and waits until they and the border, which the frame does not
    /// paint meanwhile, are off the screen; at most a second. Processes events other than the user's.
    ///
    /// @param isCompositing whether windows may fade out
    void clearView(bool isCompositing);

    /// What is under the frame; null on failure.
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
