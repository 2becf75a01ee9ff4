// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "tests/desktop/desktoprun.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/screenshottest.h"
#include "tests/desktop/userinput.h"
#include "tests/support/addresses.h"
#include "tests/support/countdowntest.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include <cstdlib>

using desktopuser::click;
using desktopuser::drag;
using desktopuser::pointTo;
using desktopuser::press;
using desktopuser::scale;
using userinput::xdotool;

namespace {

/// More than the 700 ms that Qt waits before it shows a tool tip.
constexpr int kToolTipMs = 2000;

} // namespace

/// Screenshots taken with pointer and keyboard, compared with what the desktop shows.
class TestScreenshot : public ScreenshotTest
{
    Q_OBJECT

private slots:
    void wholeScreenIsShotByTheEnterKey()
    {
        clickTile("screenshotFullScreenTile");
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), QGuiApplication::primaryScreen()->geometry());
        waitForTheKeyboard();
        press(QStringLiteral("Return"));
        expectShot(pixels(QGuiApplication::primaryScreen()->geometry()));
        QTRY_VERIFY(!m_window->isMinimized());
    }

    void hotkeyDoesWhatTheTileDoes()
    {
        m_window->showMinimized();
        QTRY_VERIFY(m_window->isMinimized());
        desktopuser::waitUntilStill();
        press(QStringLiteral("F10"));
        QTRY_VERIFY(frame() != nullptr);
        QCOMPARE(frame()->geometry(), QGuiApplication::primaryScreen()->geometry());
        waitForTheKeyboard();
        press(QStringLiteral("Return"));
        expectShot(pixels(QGuiApplication::primaryScreen()->geometry()));
        QTRY_VERIFY(!m_window->isMinimized());
    }

    /// Its bar lies inside, and with the pointer on the button there is a tool tip as well.
    void neitherBarNorToolTipIsInTheShot()
    {
        clickTile("screenshotFullScreenTile");
        QTRY_VERIFY(frame() != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(frame()));
        const QPoint position = barButton("saveButton").mapToGlobal(QPoint(15, 15));
        // A tool tip waits for the pointer's last movement within the button.
        bool isShown = false;
        for (int attempt = 0; attempt < 5 && !isShown; ++attempt) {
            pointTo(position + QPoint(attempt % 2, 0));
            isShown = QTest::qWaitFor([] { return QToolTip::isVisible(); }, kToolTipMs);
        }
        QVERIFY(isShown);
        xdotool({"click", "1"});
        expectShot(pixels(QGuiApplication::primaryScreen()->geometry()));
    }

    void regionIsDraggedOutMovedResizedAndShot()
    {
        dragRegion();
        QCOMPARE(frame()->geometry(), region());
        // By its bar, which hangs below it.
        const QPoint bar = region().bottomRight() + QPoint(-60, 16);
        drag(bar, bar + QPoint(-40, 20));
        QTRY_COMPARE(frame()->geometry(), region().translated(-40, 20));
        const QPoint corner = frame()->geometry().bottomRight();
        drag(corner, corner + QPoint(30, 42));
        QTRY_COMPARE(frame()->geometry(), region().translated(-40, 20).adjusted(0, 0, 30, 42));
        const QRect framed = frame()->geometry();
        click(barButton("saveButton"));
        expectShot(pixels(framed));
    }

    void strokesAreInTheShotAndTheBorderIsNot()
    {
        dragRegion();
        click(barButton("drawButton"));
        const QPoint from = region().topLeft() + QPoint(60, 80);
        const QPoint to = from + QPoint(120, 0);
        drag(from, to);
        desktopuser::waitUntilStill();
        click(barButton("saveButton"));
        QTRY_COMPARE(m_produced->size(), 1);
        const QImage shot(m_produced->at(0).at(0).toString());
        const QRect covered = pixels(region());
        QCOMPARE(shot.size(), covered.size());
        const QPoint middle = (QPointF((from + to) / 2 - region().topLeft()) * scale()).toPoint();
        QCOMPARE(shot.pixel(middle), qRgb(255, 0, 0));
        QCOMPARE(shot.pixel(middle - QPoint(40, 0)), qRgb(255, 0, 0));
        // What makes the frame take the pointer is seen by nobody, but it is there.
        constexpr int kFill = 2;
        const int below = static_cast<int>(120 * scale());
        const QRect untouched(0, below, shot.width(), shot.height() - below);
        QVERIFY(largestDifference(shot.copy(untouched), m_desktop.copy(untouched.translated(covered.topLeft()))) <=
                kFill);
        const QRect top(0, 0, shot.width(), 10);
        QVERIFY(largestDifference(shot.copy(top), m_desktop.copy(top.translated(covered.topLeft()))) <= kFill);
    }

    void pointerReachesWhatIsInTheFrameUntilThePenIsOn()
    {
        QWidget below(nullptr, Qt::FramelessWindowHint);
        below.setGeometry(region().adjusted(-20, -20, 20, 20));
        auto* const target = new QPushButton(&below);
        target->setGeometry(0, 0, below.width(), below.height());
        const QSignalSpy clicked(target, &QPushButton::clicked);
        dragRegion();
        below.show();
        QVERIFY(QTest::qWaitForWindowExposed(&below));
        desktopuser::waitUntilStill();
        click(region().center());
        QTRY_COMPARE(clicked.size(), 1);
        click(barButton("drawButton"));
        desktopuser::waitUntilStill();
        click(region().center());
        QTest::qWait(200);
        QCOMPARE(clicked.size(), 1);
        click(barButton("drawButton"));
        desktopuser::waitUntilStill();
        click(region().center());
        QTRY_COMPARE(clicked.size(), 2);
    }

    /// It lies below the frame, which takes the pointer for the pen everywhere else.
    void boxThatReportsAFailureIsClosedByThePointerThoughThePenIsOn()
    {
        m_boxes.reset();
        clickTile("screenshotFullScreenTile");
        QTRY_VERIFY(frame() != nullptr);
        waitForTheKeyboard();
        click(barButton("drawButton"));
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("nonsense"));
        bool closed = false;
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&look, &closed] {
            const QPointer<QMessageBox> box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr)
                return;
            look.stop();
            desktopuser::waitUntilStill();
            click(*box->button(QMessageBox::Ok));
            closed = QTest::qWaitFor([&box] { return box == nullptr || !box->isVisible(); });
            // However it ends, the test goes on.
            if (!closed)
                box->reject();
        });
        look.start(100);
        click(barButton("saveButton"));
        QTRY_VERIFY(!look.isActive() && QApplication::activeModalWidget() == nullptr);
        QVERIFY(closed);
        QVERIFY(frame() != nullptr);
        QVERIFY(bar().isVisible());
        // The pen is still on, and the keyboard is the frame's again.
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("PNG"));
        m_boxes = std::make_unique<messagebox::Recorder>();
        drag(region().topLeft(), region().topRight());
        press(QStringLiteral("Return"));
        QTRY_COMPARE(m_produced->size(), 1);
        const QImage shot(m_produced->at(0).at(0).toString());
        QCOMPARE(shot.pixel(pixels(region()).topLeft() + QPoint(60, 0) -
                            QGuiApplication::primaryScreen()->geometry().topLeft()),
                 qRgb(255, 0, 0));
    }

    void escapeGivesTheShotUp()
    {
        clickTile("screenshotFullScreenTile");
        QTRY_VERIFY(frame() != nullptr);
        waitForTheKeyboard();
        press(QStringLiteral("Escape"));
        QTRY_VERIFY(frame() == nullptr);
        QTRY_VERIFY(!m_window->isMinimized());
        QVERIFY(m_produced->isEmpty());
    }

    void savedScreenshotIsReportedInABoxThatBlocksNothing()
    {
        m_boxes.reset();
        QPointer<QMessageBox> box = shootAndAwaitBox();
        QVERIFY(box != nullptr);
        QCOMPARE(box->windowTitle(), QStringLiteral("Screenshot Saved"));
        QCOMPARE(box->text(), "Screenshot saved to: " + m_produced->at(0).at(0).toString());
        press(QStringLiteral("Return"));
        QTRY_VERIFY(box.isNull());
        // The window can be worked while it is open.
        box = shootAndAwaitBox();
        QVERIFY(box != nullptr);
        box->move(m_window->geometry().bottomLeft() + QPoint(0, 20));
        desktopuser::waitUntilStill();
        auto* const tab = m_window->findChild<QPushButton*>(QStringLiteral("recordingTab"));
        QVERIFY(!tab->isChecked());
        click(*tab);
        QTRY_VERIFY(tab->isChecked());
        QVERIFY(box != nullptr && box->isVisible());
        click(*box->button(QMessageBox::Ok));
        QTRY_VERIFY(box.isNull());
    }

    void savedScreenshotIsOnTheClipboardAndOpenedFromItsBox()
    {
        m_boxes.reset();
        const OpenedAddresses opener({"file"});
        const QPointer<QMessageBox> box = shootAndAwaitBox();
        QVERIFY(box != nullptr);
        const QString path = m_produced->at(0).at(0).toString();
        QCOMPARE(QGuiApplication::clipboard()->image().size(), QImage(path).size());
        QStringList texts;
        const QList<QAbstractButton*> buttons = box->buttons();
        for (const QAbstractButton* const button : buttons)
            texts.append(button->text());
        QVERIFY2(texts.contains(QLatin1String("Open")) && texts.contains(QLatin1String("Show in Folder")),
                 qPrintable(texts.join(u'|')));
        click(*static_cast<QPushButton*>(buttons.at(texts.indexOf(QLatin1String("Open")))));
        QTRY_COMPARE(opener.files(), QStringList{path});
        QTRY_VERIFY(box.isNull());
    }

    void hotkeysWorkWhileTheBoxOfASavedScreenshotIsOpen()
    {
        m_boxes.reset();
        QPointer<QMessageBox> box = shootAndAwaitBox();
        QVERIFY(box != nullptr);
        press(QStringLiteral("F10"));
        QTRY_VERIFY(frame() != nullptr);
        // It would be in the shot.
        QTRY_VERIFY(box.isNull());
        waitForTheKeyboard();
        press(QStringLiteral("Return"));
        QTRY_VERIFY(savedBox() != nullptr);
        box = savedBox();
        bool isCounting = false;
        bool isGone = false;
        whenCountingDown(m_window.get(), [&] {
            isCounting = true;
            isGone = box.isNull() || !box->isVisible();
            shownWindow<SCCountdownWidget>()->close();
        });
        press(QStringLiteral("F9"));
        QTRY_VERIFY(isCounting);
        QVERIFY(isGone);
        QTRY_VERIFY(shownWindow<SCCountdownWidget>() == nullptr && !m_window->isMinimized());
    }

private:
    QMessageBox* savedBox() const
    {
        auto* const box = m_window->findChild<QMessageBox*>();
        return box != nullptr && box->isVisible() ? box : nullptr;
    }

    /// Null where there is none.
    QMessageBox* shootAndAwaitBox() const
    {
        click(*m_window->findChild<QPushButton*>(QStringLiteral("screenshotTab")));
        clickTile("screenshotFullScreenTile");
        if (!QTest::qWaitFor([] { return frame() != nullptr; }))
            return nullptr;
        waitForTheKeyboard();
        press(QStringLiteral("Return"));
        (void)QTest::qWaitFor([this] { return savedBox() != nullptr && savedBox()->isActiveWindow(); });
        desktopuser::waitUntilStill();
        return savedBox();
    }
};

REGISTER_TEST(desktopuser::run<TestScreenshot>);

#include "test_screenshot.moc"
