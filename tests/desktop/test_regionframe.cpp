// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/regiontest.h"
#include "tests/desktop/userinput.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMargins>
#include <QPushButton>
#include <QScreen>
#include <QTest>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::press;
using desktopuser::scale;

/// The frame around the region: chosen by a ratio, moved, resized, closed and counted down in.
class TestRegionFrame : public RegionTest
{
    Q_OBJECT

private slots:
    void presetIsChosenInItsBox()
    {
        constexpr QSize physical(608, 1080);
        const auto name = QStringLiteral("9:16");
        choosePreset(name);
        QTRY_VERIFY(frame() != nullptr);
        // Truncated to whole logical pixels.
        const QSize size(int(physical.width() / scale()), int(physical.height() / scale()));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QSize outer = size + QSize(2 * kBorderPx, 2 * kBorderPx);
        const QPoint corner((screen.width() - outer.width()) / 2 + screen.x(),
                            (screen.height() - outer.height()) / 2 + screen.y());
        QTRY_COMPARE(frame()->geometry(), QRect(corner, outer));
        QTRY_VERIFY(isLike(colourAt(corner + QPoint(1, outer.height() / 2)), kBorder));
        QVERIFY(isLike(colourAt(corner + QPoint(outer.width() / 2, outer.height() - 2)), kBorder));
        QCOMPARE(field("widthEdit"), QString::number(physical.width()));
        QCOMPARE(field("heightEdit"), QString::number(physical.height()));
        QCOMPARE(child<QComboBox>("ratioBox")->currentText(), name);
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void frameIsMovedByItsBar()
    {
        dragRegion();
        const MessageCapture messages;
        const QPoint bar = frame()->geometry().topRight() + QPoint(-40, -15);
        drag(bar, bar + QPoint(-20, 44));
        const QRect moved = region().translated(-20, 44);
        QTRY_COMPARE(frame()->geometry(), framed(moved));
        QTRY_COMPARE(wrongInTheFrame(moved), QString());
        expectFields(kRegion.size());
        expectPosition(messages, moved);
        const QStringList coords = messages.texts().filter(QStringLiteral("Window coords"));
        QVERIFY(coords.size() > 1);
        // Only where it rests is applied.
        QCOMPARE(messages.texts().filter(QStringLiteral("] position ")).size(), 1);
    }

    void frameIsResizedByAHandle_data()
    {
        QTest::addColumn<QPoint>("distance");
        QTest::addColumn<QMargins>("grown");
        QTest::newRow("larger") << QPoint(20, 14) << QMargins(0, 0, 20, 14);
        QTest::newRow("no smaller than the minimum") << QPoint(-300, -220) << QMargins(0, 0, -128, -98);
    }

    void frameIsResizedByAHandle()
    {
        QFETCH(const QPoint, distance);
        QFETCH(const QMargins, grown);
        dragRegion();
        const MessageCapture messages;
        const QPoint from = frame()->geometry().bottomRight() - QPoint(1, 1);
        drag(from, from + distance);
        const QRect area = region().marginsAdded(grown);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        QTRY_COMPARE(wrongInTheFrame(area), QString());
        expectFields(area.size());
        expectPosition(messages, area);
        QCOMPARE(messages.texts().filter(QStringLiteral("Window coords")).size(), 1);
    }

    void lockedSizeKeepsItsRatio()
    {
        dragRegion();
        click(*child<QPushButton>("lockButton"));
        QVERIFY(child<QPushButton>("lockButton")->isChecked());
        const QRect before = frame()->geometry();
        const QPoint handle(before.right() - 1, before.center().y());
        drag(handle, handle + QPoint(40, 0));
        // 368 wide, at 328 to 248 so 278 high: 15 more above and below.
        const QRect area = region().adjusted(0, -15, 40, 15);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
        click(*child<QPushButton>("lockButton"));
        drag(handle + QPoint(40, 0), handle);
        QTRY_COMPARE(frame()->geometry(), framed(region().adjusted(0, -15, 0, 15)));
    }

    void typedWidthSizesTheRegionAndNonsenseIsTold()
    {
        dragRegion();
        enter("widthEdit", QStringLiteral("400"));
        const QRect area = region().adjusted(-40, 0, 40, 0);
        QTRY_COMPARE(frame()->geometry(), framed(area));
        QTRY_COMPARE(wrongInTheFrame(area), QString());
        expectFields(area.size());
        enter("widthEdit", QStringLiteral("much"));
        const auto* const notice = child<QLabel>("noticeText");
        QTRY_VERIFY(notice->isVisible());
        QCOMPARE(notice->text(), QStringLiteral("The width has to be a whole number from 192 to 2000."));
        QCOMPARE(field("widthEdit"), QStringLiteral("much"));
        press(QStringLiteral("Escape"));
        expectFields(area.size());
        QCOMPARE(frame()->geometry(), framed(area));
    }

    /// The keyboard stays where it is when the frame appears.
    void typedSizeOfTheWholeScreenMakesARegion()
    {
        click(*child<QLineEdit>("widthEdit"));
        press(QStringLiteral("ctrl+a"));
        userinput::xdotool({"type", "640"});
        press(QStringLiteral("Tab"));
        userinput::xdotool({"type", "360"});
        press(QStringLiteral("Return"));
        QTRY_VERIFY(frame() != nullptr);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QRect area(screen.center() - QPoint(319, 179), QSize(640, 360));
        QTRY_COMPARE(frame()->geometry(), framed(area));
        expectFields(area.size());
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
        desktopuser::waitUntilStill();
        QVERIFY(child<QLineEdit>("heightEdit")->hasFocus());
        press(QStringLiteral("ctrl+a"));
        userinput::xdotool({"type", "400"});
        press(QStringLiteral("Return"));
        expectFields({640, 400});
    }

    void presetStaysChosenWhileTheSizeIsLocked()
    {
        choosePreset(QStringLiteral("9:16"));
        QTRY_VERIFY(frame() != nullptr);
        click(*child<QPushButton>("lockButton"));
        QPoint bar = frame()->geometry().topRight() + QPoint(-40, -15);
        drag(bar, bar + QPoint(20, 0));
        QCOMPARE(child<QComboBox>("ratioBox")->currentText(), QStringLiteral("9:16"));
        click(*child<QPushButton>("lockButton"));
        bar += QPoint(20, 0);
        drag(bar, bar - QPoint(20, 0));
        QTRY_COMPARE(child<QComboBox>("ratioBox")->currentIndex(), 0);
    }

    void frameIsClosedByItsButton()
    {
        dragRegion();
        click(*barButton("closeButton"));
        QTRY_VERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        expectFields(QGuiApplication::primaryScreen()->size());
        QTRY_COMPARE(colourAt(region().topLeft() - QPoint(2, -40)), kBackdrop);
        QCOMPARE(colourAt(region().topRight() + QPoint(-20, -20)), kBackdrop);
    }

    void frameReopensAfterItWasClosed()
    {
        dragRegion();
        click(*barButton("closeButton"));
        QTRY_VERIFY(frame() == nullptr);
        dragRegion();
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(barButton("closeButton")->isVisible());
    }

    void screenSwitchTakesTheFrameAwayAndTheTilesAlong()
    {
        dragRegion();
        click(*child<QWidget>("screenSwitch"));
        QTRY_VERIFY(frame() == nullptr);
        QCOMPARE(selectedTiles(), QStringList());
        QTRY_COMPARE(colourAt(region().topLeft() - QPoint(2, -40)), kBackdrop);
        expectFields(kRegion.size());
        click(*child<QWidget>("screenSwitch"));
        QTRY_COMPARE(selectedTiles(), QStringList{"fullScreenTile"});
        expectFields(QGuiApplication::primaryScreen()->size());
    }

    void countdownIsOverTheRegionsCentreAndTheFrameStays()
    {
        dragRegion();
        const MessageCapture messages;
        QRect countdown;
        QRgb ring = 0;
        QString wrong;
        const QPoint centre = region().topLeft() + QPoint(kRegion.width() / 2, kRegion.height() / 2);
        duringTheCountdown([&] {
            countdown =
                shownWindow<SCCountdownWidget>() != nullptr ? shownWindow<SCCountdownWidget>()->geometry() : QRect();
            ring = colourAt(centre - QPoint(99, 20));
            wrong = wrongInTheBorder(region());
        });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCancelled(messages));
        QCOMPARE(countdown, QRect(centre - QPoint(100, 120), QSize(200, 240)));
        QCOMPARE(QColor(ring), QColor(kBorder));
        QCOMPARE(wrong, QString());
        QTRY_VERIFY(!m_window->isMinimized());
        QTRY_COMPARE(wrongInTheFrame(region()), QString());
        QVERIFY(shownWindow<SCCountdownWidget>() == nullptr);
        QCOMPARE(selectedTiles(), QStringList{"regionTile"});
    }

    void frameStartsTheCountdownItself()
    {
        dragRegion();
        const MessageCapture messages;
        bool minimised = false;
        bool recording = false;
        duringTheCountdown([&] {
            minimised = m_window->isMinimized();
            recording = frame() != nullptr && frame()->isRecording();
        });
        click(*barButton("startButton"));
        QTRY_VERIFY(isCancelled(messages));
        QVERIFY(minimised);
        QVERIFY(recording);
        QTRY_VERIFY(!m_window->isMinimized());
        QTRY_VERIFY(!frame()->isRecording());
    }

private:
    void enter(const char* name, const QString& text) const
    {
        click(*child<QLineEdit>(QLatin1String(name)));
        press(QStringLiteral("ctrl+a"));
        userinput::xdotool({"type", text});
        press(QStringLiteral("Return"));
    }
};

REGISTER_TEST(desktopuser::run<TestRegionFrame>);

#include "test_regionframe.moc"
