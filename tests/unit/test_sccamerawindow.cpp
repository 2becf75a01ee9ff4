// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/sccamerawindow.h"
#include "tests/support/fakecameras.h"
#include "tests/support/widgetimage.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QTranslator>
#include <QVideoFrame>
#include <QVideoSink>
#include <QVideoWidget>

#include <stdexcept>

namespace {

/// Puts every text in brackets.
class Brackets : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* /*context*/, const char* source, const char* /*disambiguation*/,
                      int /*number*/) const override
    {
        return QStringLiteral("[%1]").arg(QString::fromUtf8(source));
    }
};

} // namespace

/// What the window is, how the mouse moves and resizes it, and where it is shown. A made-up 16:9 camera is in it.
class TestSCCameraWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_cameras = std::make_shared<FakeCameras>();
        m_cameras->plugIn({FakeCameras::device("A", {FakeCameras::format(1920, 1080, 30)})});
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        QCoreApplication::processEvents();
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
    }

    void windowIsFramelessAndStaysOnTop()
    {
        QCOMPARE(int(m_window->windowFlags()), 0x4081B);
        QVERIFY(m_window->isWindow());
        for (const Qt::WidgetAttribute attribute :
             {Qt::WA_MouseTracking, Qt::WA_TranslucentBackground, Qt::WA_NoSystemBackground})
            QVERIFY(m_window->testAttribute(attribute));
        QVERIFY(!m_window->testAttribute(Qt::WA_QuitOnClose));
        QCOMPARE(m_window->styleSheet(),
                 QStringLiteral("SCCameraWindow {  background: rgba(40, 40, 46, 240);  border: 1px solid "
                                "transparent;}SCCameraWindow:hover {  border: 1px solid #007ACC;}"));
    }

    void windowIsMadeSmall()
    {
        m_cameras->plugIn({});
        const SCCameraWindow window(m_cameras);
        QCOMPARE(window.minimumSize(), QSize(200, 112));
        QCOMPARE(window.size(), QSize(400, 225));
    }

    void videoFillsTheWindow()
    {
        const auto* const layout = qobject_cast<QVBoxLayout*>(m_window->layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 0);
        const auto* const video = m_window->findChild<QVideoWidget*>();
        QCOMPARE(layout->indexOf(video), 0);
        QCOMPARE(layout->count(), 1);
        QVERIFY(video->testAttribute(Qt::WA_TransparentForMouseEvents));
        QVERIFY(video->testAttribute(Qt::WA_MouseTracking));
        QCOMPARE(video->sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding));
        QCOMPARE(video->aspectRatioMode(), Qt::KeepAspectRatio);
        m_window->show();
        QCOMPARE(video->geometry(), m_window->rect());
    }

    void layerThatCatchesTheMouseStaysOverTheVideo()
    {
        m_window->show();
        QWidget* const layer = mouseLayer();
        QVERIFY(layer->testAttribute(Qt::WA_MouseTracking));
        QVERIFY(!layer->testAttribute(Qt::WA_TransparentForMouseEvents));
        QCOMPARE(layer->styleSheet(), QStringLiteral("background: transparent;"));
        m_window->resize(640, 360);
        QCOMPARE(layer->geometry(), QRect(0, 0, 640, 360));
        const QObjectList& children = m_window->children();
        QVERIFY(children.indexOf(layer) > children.indexOf(m_window->findChild<QVideoWidget*>()));
    }

    void labelShowsThatTheCameraIsLoading()
    {
        const auto* const label = m_window->findChild<QLabel*>();
        QVERIFY(label->isHidden());
        QCOMPARE(label->text(), QStringLiteral("Loading camera..."));
        QCOMPARE(label->alignment(), Qt::AlignCenter);
        QCOMPARE(label->styleSheet(), QStringLiteral("QLabel { color: white; background-color: rgba(0, 0, 0, 180); }"));
        m_cameras->onCall = [](const QString& call) {
            if (call == QLatin1String("activate"))
                throw std::runtime_error("busy");
        };
        m_window->show();
        QVERIFY(label->isVisible());
        QCOMPARE(label->geometry(), m_window->rect());
        const QObjectList& children = m_window->children();
        QVERIFY(children.indexOf(label) > children.indexOf(mouseLayer()));
    }

    void textsFollowTheLanguage()
    {
        Brackets brackets;
        QVERIFY(QCoreApplication::installTranslator(&brackets));
        QCoreApplication::processEvents();
        QCOMPARE(m_window->findChild<QLabel*>()->text(), QStringLiteral("[Loading camera...]"));
        QCOMPARE(m_window->windowTitle(), QStringLiteral("[Webcam]"));
        QCoreApplication::removeTranslator(&brackets);
        QCoreApplication::processEvents();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Webcam"));
    }

    void windowIsShownInTheLowerRightCornerOfTheScreen()
    {
        m_window->show();
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(m_window->size(), QSize(400, 225));
        QCOMPARE(m_window->pos(),
                 QPoint(available.x() + available.width() - 20 - 400, available.y() + available.height() - 20 - 225));
        m_window->hide();
        m_window->move(5, 6);
        m_window->show();
        QCOMPARE(m_window->x(), available.x() + available.width() - 20 - 400);
    }

    void windowThatWasMovedIsShownWhereTheLastDragBegan()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({200, 100}, {30, 20});
        QCOMPARE(m_window->geometry(), QRect(90, 70, 400, 225));
        dragFrom({200, 100}, {-40, 10});
        m_window->hide();
        m_window->show();
        QCOMPARE(m_window->geometry(), QRect(90, 70, 400, 225));
    }

    void everyMoveAndResizeIsReported()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        QSignalSpy reports(m_window.get(), &SCCameraWindow::windowGeometryChanged);
        m_window->move(70, 80);
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports.last(), (QVariantList{QPoint(70, 80), QPoint(470, 305)}));
        m_window->resize(480, 270);
        QCOMPARE(reports.size(), 2);
        QCOMPARE(reports.last(), (QVariantList{QPoint(70, 80), QPoint(550, 350)}));
    }

    void cursorShowsWhatTheMouseDoes_data()
    {
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<Qt::CursorShape>("cursor");
        QTest::newRow("top left") << QPoint(9, 9) << Qt::SizeFDiagCursor;
        QTest::newRow("inside") << QPoint(10, 10) << Qt::ArrowCursor;
        // Where it is goes by the window's size.
        QTest::newRow("bottom right") << QPoint(399, 224) << Qt::SizeFDiagCursor;
    }

    void cursorShowsWhatTheMouseDoes()
    {
        QFETCH(const QPoint, position);
        QFETCH(const Qt::CursorShape, cursor);
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        m_window->setCursor(Qt::WaitCursor);
        send(QEvent::MouseMove, position, Qt::NoButton, Qt::NoButton);
        QCOMPARE(m_window->cursor().shape(), cursor);
        m_window->setCursor(Qt::WaitCursor);
        send(QEvent::MouseButtonRelease, position, Qt::LeftButton, Qt::NoButton);
        QCOMPARE(m_window->cursor().shape(), cursor);
    }

    void cursorFollowsTheMouseDuringADragToo()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        send(QEvent::MouseButtonPress, {399, 100}, Qt::LeftButton, Qt::LeftButton);
        send(QEvent::MouseMove, {200, 100}, Qt::NoButton, Qt::LeftButton);
        QCOMPARE(m_window->cursor().shape(), Qt::ArrowCursor);
        send(QEvent::MouseButtonRelease, {200, 100}, Qt::LeftButton, Qt::NoButton);
    }

    void rightEdgeOfA16To9VideoKeeps16To9GrowingSymmetrically()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({399, 100}, {80, 33});
        QCOMPARE(m_window->geometry(), QRect(60, 50 - 22, 480, 269));
    }

    void arrowKeysMoveTheWindowAndWithControlResizeIt()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        QTest::keyClick(m_window.get(), Qt::Key_Right);
        QTest::keyClick(m_window.get(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(m_window->geometry(), QRect(70, 51, 400, 225));
        QTest::keyClick(m_window.get(), Qt::Key_Right, Qt::ControlModifier);
        // 16 to 9, and as much at the top as at the bottom.
        QCOMPARE(m_window->geometry(), QRect(70, 49, 410, 229));
        QTest::keyClick(m_window.get(), Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(m_window->width(), 409);
        const QRect last = m_window->geometry();
        m_window->hide();
        m_window->show();
        QCOMPARE(m_window->geometry(), last);
    }

    void keysLeaveTheWindowInSight()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        for (int step = 0; step < 60; ++step)
            QTest::keyClick(m_window.get(), Qt::Key_Left);
        QVERIFY(m_window->x() < 0);
        QVERIFY(QGuiApplication::screenAt(m_window->geometry().center()) != nullptr);
    }

    void windowWithoutVideoIsResizedAsASquare()
    {
        m_cameras->plugIn({});
        m_window = std::make_unique<SCCameraWindow>(m_cameras);
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({399, 224}, {20, 0});
        QCOMPARE(m_window->geometry(), QRect(60, 50, 420, 420));
    }

    void dragsPastTheMinimumKeepIt()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({399, 224}, {-390, 0});
        QCOMPARE(m_window->geometry(), QRect(60, 50, 200, 112));
        // The opposite corner stays where it is.
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({2, 2}, {390, 0});
        QCOMPARE(m_window->geometry(), QRect(60 + 200, 50 + 113, 200, 112));
    }

    void otherButtonsDragNothing()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        send(QEvent::MouseButtonPress, {200, 100}, Qt::RightButton, Qt::RightButton);
        send(QEvent::MouseMove, {250, 150}, Qt::NoButton, Qt::RightButton);
        QCOMPARE(m_window->geometry(), QRect(60, 50, 400, 225));
        send(QEvent::MouseMove, {250, 150}, Qt::NoButton, Qt::LeftButton);
        QCOMPARE(m_window->geometry(), QRect(60, 50, 400, 225));
        // The right one, released, leaves a drag of the left one alone.
        send(QEvent::MouseButtonPress, {200, 100}, Qt::LeftButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, {200, 100}, Qt::RightButton, Qt::LeftButton);
        send(QEvent::MouseMove, {210, 100}, Qt::NoButton, Qt::LeftButton);
        QCOMPARE(m_window->geometry(), QRect(70, 50, 400, 225));
    }

    void releasedMouseDragsNoMore()
    {
        m_window->show();
        m_window->setGeometry(60, 50, 400, 225);
        dragFrom({200, 100}, {10, 0});
        send(QEvent::MouseMove, {300, 100}, Qt::NoButton, Qt::LeftButton);
        QCOMPARE(m_window->geometry(), QRect(70, 50, 400, 225));
    }

    void backgroundIsARoundedRectangle()
    {
        m_window->findChild<QVideoWidget*>()->hide();
        m_window->show();
        m_window->findChild<QVideoWidget*>()->hide();
        m_window->findChild<QLabel*>()->hide();
        const QImage image = imageOf(*m_window);
        for (const QPoint& inside : {QPoint(200, 100), QPoint(200, 0), QPoint(0, 100)})
            QCOMPARE(image.pixelColor(inside).rgba(), QColor(40, 40, 46, 240).rgba());
        for (const QPoint& corner : {QPoint(0, 0), QPoint(399, 0), QPoint(0, 224), QPoint(399, 224)})
            QCOMPARE(image.pixelColor(corner).alpha(), 0);
    }

    void videoIsRoundedToo()
    {
        m_window->show();
        m_window->resize(480, 270);
        const QRegion mask = m_window->mask();
        for (const QPoint& corner : {QPoint(0, 0), QPoint(479, 0), QPoint(0, 269), QPoint(479, 269)})
            QVERIFY(!mask.contains(corner));
        for (const QPoint& inside : {QPoint(5, 5), QPoint(240, 0), QPoint(479, 135), QPoint(0, 135), QPoint(240, 269)})
            QVERIFY(mask.contains(inside));
    }

    void videoReachesTheVideoWidget()
    {
        const auto* const video = m_window->findChild<QVideoWidget*>();
        QCOMPARE(video->videoSink()->videoFrame().size(), QSize(1920, 1080));
    }

private:
    QWidget* mouseLayer() const
    {
        const QList<QWidget*> children = m_window->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* const child : children) {
            if (qobject_cast<QVideoWidget*>(child) == nullptr && qobject_cast<QLabel*>(child) == nullptr)
                return child;
        }
        return nullptr;
    }

    /// As the system sends it: to the layer that catches the mouse, at a position in the window.
    void send(QEvent::Type type, const QPoint& position, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        QMouseEvent event(type, position, m_window->pos() + position, button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(mouseLayer(), &event);
    }

    void dragFrom(const QPoint& position, const QPoint& delta)
    {
        const QPoint from = m_window->pos();
        send(QEvent::MouseButtonPress, position, Qt::LeftButton, Qt::LeftButton);
        // The window goes along, and with it what its positions are counted from.
        send(QEvent::MouseMove, position + delta / 2, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseMove, position + delta - (m_window->pos() - from), Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, position, Qt::LeftButton, Qt::NoButton);
    }

    std::shared_ptr<FakeCameras> m_cameras;
    std::unique_ptr<SCCameraWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestSCCameraWindow>);

#include "test_sccamerawindow.moc"
