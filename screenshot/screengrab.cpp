// SPDX-License-Identifier: GPL-3.0-or-later
#include "screenshot/screengrab.h"

#include "platform/windowing/capture_exclusion.h"
#include "widgets/tooltip.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QThread>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace {

/// For the windows below to repaint what the border covered, and a compositor's next frame.
constexpr qint64 kRepaintMs = 100;
/// Compositors let windows fade out, and draw shadows around them.
constexpr qint64 kFadeMs = 400;
constexpr int kShadowPx = 32;
constexpr qint64 kLongestWaitMs = 1000;
constexpr unsigned long kPollMs = 10;

bool isClose(QRgb color, const QColor& expected)
{
    constexpr int kTolerance = 2;
    return std::abs(qRed(color) - expected.red()) <= kTolerance &&
           std::abs(qGreen(color) - expected.green()) <= kTolerance &&
           std::abs(qBlue(color) - expected.blue()) <= kTolerance;
}

bool isMostly(const QColor& color, const QPixmap& strip)
{
    const QImage image = strip.toImage();
    qint64 found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += isClose(image.pixel(x, y), color) ? 1 : 0;
    }
    return 2 * found > qint64(image.width()) * image.height();
}

/// A line each at the left, right, top and bottom of the frame.
std::array<QRect, 4> edgesOf(const QRect& frame)
{
    return {QRect(frame.topLeft(), frame.bottomLeft()), QRect(frame.topRight(), frame.bottomRight()),
            QRect(frame.topLeft(), frame.topRight()), QRect(frame.bottomLeft(), frame.bottomRight())};
}

QRect withShadow(const QWidget& window)
{
    return window.geometry().adjusted(-kShadowPx, -kShadowPx, kShadowPx, kShadowPx);
}

/// The part in physical pixels. Each edge is rounded by itself, and adjacent areas stay adjacent.
QRect physical(const QRect& part, double devicePixelRatio)
{
    const auto pixel = [devicePixelRatio](int edge) { return static_cast<int>(std::lround(edge * devicePixelRatio)); };
    const QPoint topLeft(pixel(part.left()), pixel(part.top()));
    return {topLeft, QPoint(pixel(part.left() + part.width()) - 1, pixel(part.top() + part.height()) - 1)};
}

/// Reaches onto other screens as far as the system shows them in one image.
QPixmap grabOfScreen(QScreen& screen, const QRect& onDesktop)
{
    const QRect part = onDesktop.translated(-screen.geometry().topLeft());
    const double ratio = screen.devicePixelRatio();
    const bool isWhole = ratio == std::floor(ratio);
    if (isWhole || !screen.geometry().contains(onDesktop))
        return screen.grabWindow(0, part.x(), part.y(), part.width(), part.height());
    // The logical size of such a screen is rounded, and a part at its edge may end a pixel beyond the screen.
    const QPixmap all = screen.grabWindow(0);
    return all.copy(physical(part, ratio) & QRect(QPoint(), all.size()));
}

} // namespace

ScreenGrab::ScreenGrab(QWidget& frame, QWidget& toolBar, const QColor& borderColor)
    : m_frame(frame)
    , m_toolBar(toolBar)
    , m_borderColor(borderColor)
    , m_grabber(&grabOfScreen)
    , m_isExcluded(platform::excludeTogether({&toolBar, &frame}))
{}

void ScreenGrab::clearView(bool isCompositing)
{
    const bool hidMore = hideOverFrame();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    if (m_isExcluded && !hidMore)
        return;
    const qint64 shortestMs = hidMore && isCompositing ? kFadeMs : kRepaintMs;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < shortestMs || (waited.elapsed() < kLongestWaitMs && isBorderVisible())) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QThread::msleep(kPollMs);
    }
}

/// Whether there was anything to hide.
bool ScreenGrab::hideOverFrame()
{
    bool hidSomething = false;
    QWidget* const tip = visibleToolTip();
    for (QWidget* const window : {tip, m_isExcluded ? nullptr : &m_toolBar}) {
        if (window == nullptr || !window->isVisible() || !withShadow(*window).intersects(m_frame.geometry()))
            continue;
        window->hide();
        hidSomething = true;
    }
    return hidSomething;
}

bool ScreenGrab::isBorderVisible() const
{
    QScreen* const shown = screen();
    if (m_isExcluded || shown == nullptr)
        return false;
    const std::array<QRect, 4> edges = edgesOf(m_frame.geometry());
    return std::ranges::any_of(
        edges, [this, shown](const QRect& edge) { return isMostly(m_borderColor, m_grabber(*shown, edge)); });
}

QScreen* ScreenGrab::screen() const
{
    QScreen* const holding = QGuiApplication::screenAt(m_frame.geometry().topLeft());
    return holding != nullptr ? holding : QGuiApplication::primaryScreen();
}

QPixmap ScreenGrab::grab() const
{
    QScreen* const shown = screen();
    return shown != nullptr ? m_grabber(*shown, m_frame.geometry()) : QPixmap();
}
