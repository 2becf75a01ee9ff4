// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/screengrabber.h"
#include "tests/engine/xserver.h"
#include "tests/support/messagecapture.h"
#include "tests/support/systemvsegments.h"
#include "tests/support/testrun.h"

#include <QImage>
#include <QTest>

#include <array>
#include <cstring>

namespace {

constexpr std::uint32_t kRed = 0xC81428;
constexpr std::uint32_t kGreen = 0x14C850;
constexpr std::uint32_t kBlue = 0x1428C8;
constexpr std::uint32_t kBlack = 0;

const auto kScreen = QStringLiteral("-screen");
const auto kSize = QStringLiteral("320x240x24");
const auto kWithout = QStringLiteral("-extension");

std::uint32_t pixel(const ScreenGrabber& grabber, int x, int y)
{
    const PixelView view = grabber.image();
    const QImage image(view.data, view.widthPx, view.heightPx, view.strideBytes, QImage::Format_RGB32);
    return image.pixel(x, y) & 0xFFFFFF;
}

QList<int> ownSegments()
{
    return systemvsegments::madeBy(QCoreApplication::applicationPid());
}

} // namespace

class TestScreenGrabber : public QObject
{
    Q_OBJECT

private slots:
    void imageIsTheAreaPixelByPixel_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("shared memory") << QStringList{kScreen, QStringLiteral("0"), kSize};
        QTest::newRow("no MIT-SHM") << QStringList{kScreen, QStringLiteral("0"), kSize, kWithout,
                                                   QStringLiteral("MIT-SHM")};
        QTest::newRow("no extension") << QStringList{kScreen,
                                                     QStringLiteral("0"),
                                                     kSize,
                                                     kWithout,
                                                     QStringLiteral("MIT-SHM"),
                                                     kWithout,
                                                     QStringLiteral("XFIXES"),
                                                     kWithout,
                                                     QStringLiteral("DAMAGE")};
    }

    void imageIsTheAreaPixelByPixel()
    {
        QFETCH(const QStringList, options);
        XServer server;
        QVERIFY(server.start(options));
        PaintedWindow window(QRect(20, 10, 101, 51), kRed, server.display().constData());
        window.paint(QRect(0, 0, 1, 51), kGreen);
        window.paint(QRect(100, 50, 1, 1), kBlue);

        X11Connection connection(server.display().constData());
        QCOMPARE(connection.obstacle(), QString());
        QCOMPARE(connection.desktop(), QRect(0, 0, 320, 240));
        QCOMPARE(connection.hasSharedMemory(), options.size() == 3);
        ScreenGrabber grabber(connection);
        grabber.setArea(QRect(19, 9, 103, 53));
        QVERIFY(grabber.grab(connection.desktop()));
        QCOMPARE(pixel(grabber, 0, 0), kBlack);
        QCOMPARE(pixel(grabber, 1, 1), kGreen);
        QCOMPARE(pixel(grabber, 1, 51), kGreen);
        QCOMPARE(pixel(grabber, 2, 1), kRed);
        QCOMPARE(pixel(grabber, 101, 1), kRed);
        QCOMPARE(pixel(grabber, 101, 51), kBlue);
        QCOMPARE(pixel(grabber, 102, 52), kBlack);
    }

    void onlyTheChangedRowsAreGrabbed()
    {
        PaintedWindow window(QRect(0, 0, 200, 200), kRed);
        X11Connection connection;
        ScreenGrabber grabber(connection);
        grabber.setArea(QRect(0, 0, 200, 200));
        QVERIFY(grabber.grab(connection.desktop()));
        window.paint(QRect(0, 0, 200, 200), kGreen);
        QVERIFY(grabber.grab(QRegion(50, 10, 5, 5) + QRegion(0, 150, 1, 50)));
        QCOMPARE(pixel(grabber, 50, 9), kRed);
        QCOMPARE(pixel(grabber, 50, 10), kGreen);
        QCOMPARE(pixel(grabber, 50, 14), kGreen);
        QCOMPARE(pixel(grabber, 50, 15), kRed);
        QCOMPARE(pixel(grabber, 0, 149), kRed);
        QCOMPARE(pixel(grabber, 0, 150), kGreen);
        QCOMPARE(pixel(grabber, 0, 199), kGreen);
        QVERIFY(grabber.grab(QRegion()));
        QCOMPARE(pixel(grabber, 50, 15), kRed);
    }

    void areaThatMovesShowsTheOtherPosition()
    {
        PaintedWindow window(QRect(0, 0, 400, 300), kRed);
        window.paint(QRect(203, 101, 50, 50), kGreen);
        X11Connection connection;
        ScreenGrabber grabber(connection);
        grabber.setArea(QRect(0, 0, 50, 50));
        QVERIFY(grabber.grab(connection.desktop()));
        QCOMPARE(pixel(grabber, 0, 0), kRed);
        grabber.setArea(QRect(203, 101, 50, 50));
        QVERIFY(grabber.grab(connection.desktop()));
        QCOMPARE(pixel(grabber, 0, 0), kGreen);
        QCOMPARE(pixel(grabber, 49, 49), kGreen);
    }

    void whatWasThereBeforeAGrabCanBeTakenBack_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QRect>("area");
        const QStringList shared{kScreen, QStringLiteral("0"), kSize};
        QTest::newRow("shared memory") << shared << QRect(10, 20, 100, 50);
        QTest::newRow("shared memory, beyond the desktop") << shared << QRect(-10, 20, 100, 50);
        QTest::newRow("no MIT-SHM") << shared + QStringList{kWithout, QStringLiteral("MIT-SHM")}
                                    << QRect(10, 20, 100, 50);
    }

    void whatWasThereBeforeAGrabCanBeTakenBack()
    {
        QFETCH(const QStringList, options);
        QFETCH(const QRect, area);
        XServer server;
        QVERIFY(server.start(options));
        PaintedWindow window(QRect(0, 0, 320, 240), kRed, server.display().constData());
        X11Connection connection(server.display().constData());
        ScreenGrabber grabber(connection);
        grabber.setArea(area);
        const auto at = [&](int x, int y) { return pixel(grabber, x - area.x(), y - area.y()); };
        QVERIFY(grabber.grab(connection.desktop(), ScreenGrabber::Former::IsKept));
        window.paint(QRect(0, 0, 320, 240), kGreen);
        QVERIFY(grabber.grab(connection.desktop(), ScreenGrabber::Former::IsKept));
        grabber.takeBack(QRect(30, 40, 20, 10));
        QCOMPARE(at(29, 40), kGreen);
        QCOMPARE(at(30, 40), kRed);
        QCOMPARE(at(49, 49), kRed);
        QCOMPARE(at(50, 49), kGreen);
        // Each image has all of it, whatever of the rows between was grabbed.
        window.paint(QRect(0, 60, 320, 1), kBlue);
        QVERIFY(grabber.grab(QRect(0, 60, 320, 1), ScreenGrabber::Former::IsKept));
        QCOMPARE(at(60, 60), kBlue);
        QCOMPARE(at(60, 59), kGreen);
        QCOMPARE(at(60, 21), kGreen);
        grabber.takeBack(QRect(60, 60, 2, 1));
        QCOMPARE(at(60, 60), kGreen);
        QCOMPARE(at(62, 60), kBlue);
        grabber.takeBack(QRect(62, 60, 1, 1));
        QVERIFY(grabber.grab(QRegion(), ScreenGrabber::Former::IsKept));
        grabber.takeBack(QRect(63, 60, 1, 1));
        QCOMPARE(at(62, 60), kGreen);
        QCOMPARE(at(63, 60), kBlue);
        grabber.blacken(QRect(70, 60, 2, 400));
        QCOMPARE(at(69, 60), kBlue);
        QCOMPARE(at(71, 69), kBlack);
    }

    void whatLiesOutsideTheDesktopIsBlack_data()
    {
        QTest::addColumn<QRect>("area");
        QTest::newRow("left and above") << QRect(-31, -21, 100, 100);
        QTest::newRow("above") << QRect(40, -21, 100, 100);
        QTest::newRow("right and below") << QRect(251, 171, 100, 100);
        QTest::newRow("below") << QRect(40, 171, 100, 100);
        QTest::newRow("on all sides") << QRect(-10, -10, 340, 260);
        QTest::newRow("away from it") << QRect(400, 300, 20, 20);
    }

    void whatLiesOutsideTheDesktopIsBlack()
    {
        QFETCH(const QRect, area);
        XServer server;
        QVERIFY(server.start({kScreen, QStringLiteral("0"), kSize}));
        const QRect desktop(0, 0, 320, 240);
        const PaintedWindow window(desktop, kRed, server.display().constData());
        X11Connection connection(server.display().constData());
        ScreenGrabber grabber(connection);
        // What another area has left behind.
        grabber.setArea(QRect(QPoint(0, 0), area.size().boundedTo(desktop.size())));
        QVERIFY(grabber.grab(desktop));
        grabber.setArea(area);
        QVERIFY(grabber.grab(desktop));
        for (int y = 0; y < area.height(); ++y) {
            for (int x = 0; x < area.width(); ++x)
                QCOMPARE(pixel(grabber, x, y), desktop.contains(area.topLeft() + QPoint(x, y)) ? kRed : kBlack);
        }
    }

    void everyKindOfMemoryIsWrittenByTheServerAndLeavesNothing()
    {
        const X11Connection connection;
        QCOMPARE(ownSegments(), QList<int>());
        QVERIFY(connection.takesDescriptors());
        for (auto* const make : {&SharedMemory::makeFromDescriptor, &SharedMemory::makeSystemV}) {
            const PaintedWindow window(QRect(0, 0, 10, 10), kGreen);
            const std::unique_ptr<SharedMemory> memory = make(connection, 400);
            QVERIFY(memory);
            const platform::xcb::Owned<xcb_shm_get_image_reply_t> reply(
                xcb_shm_get_image_reply(connection.get(),
                                        xcb_shm_get_image(connection.get(), connection.root(), 0, 0, 10, 10, ~0U,
                                                          XCB_IMAGE_FORMAT_Z_PIXMAP, memory->id(), 0),
                                        nullptr));
            QVERIFY(reply);
            QCOMPARE(QImage(memory->data(), 10, 10, QImage::Format_RGB32).pixel(9, 9) & 0xFFFFFF, kGreen);
            if (make == &SharedMemory::makeFromDescriptor)
                QCOMPARE(ownSegments(), QList<int>());
        }
        QCOMPARE(ownSegments(), QList<int>());
    }

    void memoryThatTheServerCannotWriteIntoIsDroppedForGood()
    {
        XServer server;
        QVERIFY(server.start({kScreen, QStringLiteral("0"), kSize}));
        PaintedWindow window(QRect(0, 0, 320, 240), kRed, server.display().constData());
        X11Connection connection(server.display().constData());
        ScreenGrabber grabber(connection);
        grabber.setArea(QRect(0, 0, 100, 100));
        // The connection numbers what it makes.
        const xcb_shm_seg_t memory = xcb_generate_id(connection.get()) - 1;
        QVERIFY(grabber.grab(connection.desktop()));
        // Both images are whole after it.
        QVERIFY(grabber.grab(QRect(0, 0, 1, 1), ScreenGrabber::Former::IsKept));
        QVERIFY(connection.check(xcb_shm_detach_checked(connection.get(), memory)));
        window.paint(QRect(0, 0, 320, 240), kGreen);
        const MessageCapture log;
        const QRegion changed(0, 0, 1, 50);
        QVERIFY(!grabber.grab(changed, ScreenGrabber::Former::IsKept));
        QVERIFY(!grabber.grab(changed, ScreenGrabber::Former::IsKept));
        QVERIFY(grabber.grab(changed, ScreenGrabber::Former::IsKept));
        QCOMPARE(pixel(grabber, 0, 0), kGreen);
        QCOMPARE(pixel(grabber, 99, 49), kGreen);
        // What was there before is there as ever.
        QCOMPARE(pixel(grabber, 99, 50), kRed);
        grabber.takeBack(QRect(10, 10, 5, 5));
        QCOMPARE(pixel(grabber, 10, 10), kRed);
        QCOMPARE(pixel(grabber, 15, 10), kGreen);
        const auto reason = QStringLiteral("The X server cannot write into shared memory; it sends the pixels instead");
        QCOMPARE(log.texts(QtWarningMsg).filter(QStringLiteral("[WARNING] ") + reason).size(), 1);
        const std::uint32_t number = xcb_generate_id(connection.get());
        grabber.setArea(QRect(10, 10, 200, 200));
        QCOMPARE(xcb_generate_id(connection.get()), number + 1);
        QVERIFY(grabber.grab(connection.desktop()));
        QCOMPARE(pixel(grabber, 199, 199), kGreen);
    }

    /// As long as it is attached, the system lists it as removed, for its owner alone.
    void systemVSegmentIsForItsOwnerAlone()
    {
        const X11Connection connection;
        const std::unique_ptr<SharedMemory> memory = SharedMemory::makeSystemV(connection, 4096);
        QVERIFY(memory);
        // 01000 marks what goes with its last user.
        QCOMPARE(ownSegments(), QList<int>{01600});
    }

    void displayThatCannotBeGrabbedSaysWhy_data()
    {
        QTest::addColumn<QString>("size");
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<QString>("obstacle");
        QTest::newRow("16 bits") << QStringLiteral("320x240x16") << QByteArray()
                                 << QStringLiteral("the screen has a colour depth of 16 bits, not 24 or 32");
        QTest::newRow("30 bits") << QStringLiteral("320x240x30") << QByteArray()
                                 << QStringLiteral("the screen has a colour depth of 30 bits, not 24 or 32");
        QTest::newRow("over the network")
            << kSize << QByteArray("127.0.0.1") << QStringLiteral("the X server is on another computer");
    }

    void displayThatCannotBeGrabbedSaysWhy()
    {
        QFETCH(const QString, size);
        QFETCH(const QByteArray, host);
        QFETCH(const QString, obstacle);
        XServer server;
        QVERIFY(server.start({kScreen, QStringLiteral("0"), size, QStringLiteral("-listen"), QStringLiteral("tcp")}));
        const X11Connection connection((host + server.display()).constData());
        QCOMPARE(connection.obstacle(), obstacle);
    }

    void missingDisplaySaysSo() { QCOMPARE(X11Connection(":999").obstacle(), QStringLiteral("there is no X server")); }

    void sizeOfTheDesktopThatAnotherClientClaimsIsIgnored()
    {
        XServer server;
        QVERIFY(server.start({kScreen, QStringLiteral("0"), kSize}));
        X11Connection connection(server.display().constData());
        const X11Connection other(server.display().constData());
        xcb_configure_notify_event_t claim{};
        claim.response_type = XCB_CONFIGURE_NOTIFY;
        claim.event = claim.window = connection.root();
        claim.width = claim.height = 10;
        constexpr std::size_t kEventBytes = 32;
        std::array<char, kEventBytes> event{};
        std::memcpy(event.data(), &claim, sizeof claim);
        QVERIFY(other.check(
            xcb_send_event_checked(other.get(), 0, other.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY, event.data())));
        // Its answer comes after the event.
        QVERIFY(connection.check(xcb_no_operation_checked(connection.get())));
        while (connection.nextEvent()) {
        }
        QCOMPARE(connection.desktop(), QRect(0, 0, 320, 240));
    }

    void serverThatEndsIsAFailureAndNoCrash()
    {
        auto server = std::make_unique<XServer>();
        QVERIFY(server->start({kScreen, QStringLiteral("0"), kSize}));
        X11Connection connection(server->display().constData());
        ScreenGrabber grabber(connection);
        grabber.setArea(QRect(0, 0, 100, 100));
        QVERIFY(grabber.grab(connection.desktop()));
        server.reset();
        QVERIFY(!grabber.grab(connection.desktop()));
        QVERIFY(!grabber.grab(connection.desktop()));
    }
};

REGISTER_TEST(testrun::core<TestScreenGrabber>);

#include "test_screengrabber.moc"
