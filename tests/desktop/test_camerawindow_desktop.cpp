// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/fakecameras.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QThreadPool>

#include <cmath>

using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;

namespace {

constexpr QRgb kUpper = qRgb(0, 160, 80);
constexpr QRgb kLower = qRgb(255, 255, 255);
constexpr QRgb kBorder = qRgb(0, 122, 204);
/// A machine that draws without a graphics card and is busy takes seconds for a video widget of a new size.
constexpr int kPaintTimeoutMs = 30'000;
const QRect kGeometry(200, 160, 400, 225);

bool isLike(QRgb seen, QRgb expected)
{
    // The video may be converted to another colour space and back.
    constexpr int kTolerance = 12;
    return std::abs(qRed(seen) - qRed(expected)) <= kTolerance &&
           std::abs(qGreen(seen) - qGreen(expected)) <= kTolerance &&
           std::abs(qBlue(seen) - qBlue(expected)) <= kTolerance;
}

} // namespace

/// The webcam window on a desktop, worked with the pointer and looked at. A made-up 16:9 camera is in it, whose video
/// is of one colour in its upper half and white in the lower one.
class TestCameraWindowDesktop : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        desktopuser::pointTo(onScreen({3, 3}));
        m_cameras = std::make_shared<FakeCameras>();
        m_cameras->colour = QColor(kUpper);
        m_cameras->plugIn({FakeCameras::device("A", {FakeCameras::format(1280, 720, 30)})});
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_window->setGeometry(kGeometry);
        desktopuser::waitUntilStill();
        QCOMPARE(m_window->geometry(), kGeometry);
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
    }

    void screenShowsTheVideo() { expectVideo(); }

    void videoIsThereWhenTheWindowIsShownAgain()
    {
        m_window->close();
        QTRY_VERIFY(!isLike(colourAt(at(0.5, 0.25)), kUpper));
        m_window->show();
        desktopuser::waitUntilStill();
        expectVideo();
        m_window->hide();
        m_window->show();
        desktopuser::waitUntilStill();
        expectVideo();
    }

    void videoFillsTheWindowAtEachSize()
    {
        drag(at(1, 1) - QPoint(2, 2), at(1, 1) + QPoint(158, 40));
        QTRY_COMPARE(m_window->geometry(), QRect(200, 160, 560, 315));
        expectVideo();
    }

    void rightEdgeOfA16To9VideoKeeps16To9GrowingSymmetrically()
    {
        drag(at(1, 0.5) - QPoint(2, 0), at(1, 0.5) + QPoint(78, 30));
        // 270 high, of which both sides take the same whole number of pixels.
        QTRY_COMPARE(m_window->geometry(), QRect(200, 160 - 22, 480, 225 + 44));
    }

    void leftEdgeKeepsTheRightOneWhereItIs()
    {
        drag(at(0, 0.5) + QPoint(2, 0), at(0, 0.5) + QPoint(-30, 0));
        QTRY_COMPARE(m_window->geometry(), QRect(168, 160 - 9, 432, 225 + 18));
    }

    void topEdgeKeepsTheBottomOneWhereItIs()
    {
        drag(at(0.5, 0) + QPoint(0, 2), at(0.5, 0) - QPoint(0, 43));
        QTRY_COMPARE(m_window->geometry(), QRect(160, 115, 480, 270));
    }

    void windowDraggedSmallKeepsItsMinimum()
    {
        drag(at(1, 1) - QPoint(2, 2), at(0, 0) + QPoint(20, 20));
        QTRY_COMPARE(m_window->geometry(), QRect(200, 160, 200, 112));
    }

    void windowShownAgainIsWhereTheLastDragBegan()
    {
        drag(at(0.5, 0.5), at(0.5, 0.5) + QPoint(80, 40));
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(80, 40));
        drag(at(0.5, 0.5), at(0.5, 0.5) + QPoint(-50, 100));
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(30, 140));
        m_window->hide();
        m_window->show();
        QCOMPARE(m_window->geometry(), kGeometry.translated(80, 40));
        desktopuser::waitUntilStill();
        expectVideo();
    }

    void borderIsBlueWhileThePointerIsOverTheWindow()
    {
        expectVideo();
        expectColour(edgesOf().at(0), kUpper);
        desktopuser::pointTo(at(0.5, 0.5));
        for (const QPoint& edge : edgesOf())
            expectColour(edge, kBorder);
        // It is a line: the video is right beside it, and there is no corner outside it.
        expectColour(edgesOf().at(0) + QPoint(0, 1), kUpper);
        expectColour(at(0, 0.25) + QPoint(1, 0), kUpper);
        QVERIFY(!isLike(colourAt(at(0, 0)), kBorder));
        drag(at(1, 1) - QPoint(2, 2), at(1, 1) + QPoint(158, 40));
        QTRY_COMPARE(m_window->width(), 560);
        for (const QPoint& edge : edgesOf())
            expectColour(edge, kBorder);
        desktopuser::pointTo(onScreen({3, 3}));
        expectColour(edgesOf().at(0), kUpper);
        expectColour(edgesOf().at(1), kLower);
        expectVideo();
    }

    void borderGoesWithTheWindow()
    {
        desktopuser::pointTo(at(0.5, 0.5));
        expectColour(edgesOf().at(0), kBorder);
        m_window->hide();
        desktopuser::pointTo(onScreen({3, 3}));
        m_window->show();
        m_window->setGeometry(kGeometry);
        expectColour(edgesOf().at(0), kUpper);
    }

    void windowGoesPastTheScreensEdges()
    {
        drag(at(0.5, 0.5), at(0.5, 0.5) + QPoint(-350, -250));
        QTRY_COMPARE(m_window->geometry(), kGeometry.translated(-350, -250));
    }

private:
    /// A point of the window, in shares of its width and height.
    QPoint at(double x, double y) const
    {
        const QRect geometry = m_window->geometry();
        return geometry.topLeft() + QPoint(qRound(geometry.width() * x), qRound(geometry.height() * y));
    }

    /// Upper, lower, left and right.
    QList<QPoint> edgesOf() const
    {
        return {at(0.5, 0), at(0.5, 1) - QPoint(0, 1), at(0, 0.5), at(1, 0.5) - QPoint(1, 0)};
    }

    void expectVideo() const
    {
        for (const double x : {0.05, 0.5, 0.95}) {
            expectColour(at(x, 0.08), kUpper);
            expectColour(at(x, 0.42), kUpper);
            expectColour(at(x, 0.92), kLower);
        }
    }

    static void expectColour(const QPoint& position, QRgb colour)
    {
        QTRY_VERIFY2_WITH_TIMEOUT(isLike(colourAt(position), colour), qPrintable(QColor(colourAt(position)).name()),
                                  kPaintTimeoutMs);
    }

    std::shared_ptr<FakeCameras> m_cameras;
    std::unique_ptr<SCCameraWindow> m_window;
};

REGISTER_TEST(testrun::gui<TestCameraWindowDesktop>);

#include "test_camerawindow_desktop.moc"
