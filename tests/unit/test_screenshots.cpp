// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/countdowntest.h"
#include "tests/support/shownframe.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QTimer>

#include <functional>

/// Screenshots as the main window takes them.
class TestScreenshots : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        m_window = std::make_unique<SCMainWindow>(Durations{.windowGoneMs = 20});
        m_window->show();
    }

    void cleanup() { m_window.reset(); }

    void pickedWindowBecomesAScreenshotFrameAndThePickerGoes_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("recording page") << "windowTile";
        QTest::newRow("screenshot page") << "screenshotWindowTile";
    }

    void pickedWindowBecomesAScreenshotFrameAndThePickerGoes()
    {
        QFETCH(const QString, name);
        clickTile(name);
        auto* const picker = shownWindow<WindowHighlighter>();
        QVERIFY(picker != nullptr);
        emit picker->windowClicked({30, 40, 500, 300});
        QVERIFY(!picker->isVisible());
        auto* const frame = shownWindow<SCScreenshotWindow>();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->geometry(), QRect(30, 40, 500, 300));
        QVERIFY(m_window->isMinimized());
        emit picker->windowClicked({50, 60, 400, 200});
        QCOMPARE(frame->geometry(), QRect(30, 40, 500, 300));
        frame->cancelScreenshot();
        QVERIFY(!m_window->isMinimized());
    }

    void recordingAPickedWindowLeadsToThePageOfRecordings()
    {
        const auto page = [this] {
            return m_window->findChild<QStackedWidget*>(QStringLiteral("pages"))->currentWidget()->objectName();
        };
        m_window->findChild<QPushButton*>(QStringLiteral("screenshotTab"))->click();
        clickTile("screenshotWindowTile");
        emit shownWindow<WindowHighlighter>()->windowClicked({30, 40, 500, 300});
        QCOMPARE(page(), QStringLiteral("screenshotPage"));
        QTest::keyClick(shownWindow<SCScreenshotWindow>(), Qt::Key_R);
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QCOMPARE(page(), QStringLiteral("recordingPage"));
        QVERIFY(m_window->findChild<QPushButton*>(QStringLiteral("recordingTab"))->isChecked());
        QVERIFY(!m_window->isMinimized());
    }

    void wholeScreenIsFramedForAScreenshot()
    {
        clickTile("screenshotFullScreenTile");
        auto* const frame = shownWindow<SCScreenshotWindow>();
        QVERIFY(frame != nullptr);
        QCOMPARE(frame->geometry(), QGuiApplication::primaryScreen()->geometry());
        QVERIFY(m_window->isMinimized());
        QTest::keyClick(frame, Qt::Key_Escape);
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(!m_window->isMinimized());
    }

    void regionIsDraggedOutForAScreenshot()
    {
        clickTile("screenshotRegionTile");
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        QVERIFY(m_window->isMinimized());
        emit shownWindow<AreaSelector>()->areaSelected(QRect(100, 80, 320, 240));
        QVERIFY(shownWindow<AreaSelector>() == nullptr);
        QCOMPARE(shownWindow<SCScreenshotWindow>()->geometry(), QRect(100, 80, 320, 240));
        // What is recorded is another matter.
        QVERIFY(m_window->findChild<Tile*>(QStringLiteral("fullScreenTile"))->isSelected());
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        shownWindow<SCScreenshotWindow>()->cancelScreenshot();
    }

    void regionsFrameMakesRoomForAScreenshot()
    {
        clickTile("regionTile");
        emit shownWindow<AreaSelector>()->areaSelected(QRect(100, 80, 320, 240));
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
        clickTile("screenshotFullScreenTile");
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        shownWindow<SCScreenshotWindow>()->cancelScreenshot();
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
    }

    void oneThingIsPickedAtATimeWhateverFor()
    {
        clickTile("regionTile");
        QCOMPARE(selectors(), 1);
        clickTile("screenshotRegionTile");
        QCOMPARE(selectors(), 0);
        QTRY_COMPARE(selectors(), 1);
        clickTile("windowTile");
        QCOMPARE(selectors(), 0);
        QVERIFY(shownWindow<WindowHighlighter>() != nullptr);
        clickTile("screenshotFullScreenTile");
        QVERIFY(shownWindow<WindowHighlighter>() == nullptr);
        QVERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
        clickTile("screenshotWindowTile");
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(shownWindow<WindowHighlighter>() != nullptr);
        clickTile("screenshotRegionTile");
        QVERIFY(shownWindow<WindowHighlighter>() == nullptr);
        QTRY_COMPARE(selectors(), 1);
        clickTile("regionTile");
        QCOMPARE(selectors(), 1);
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QCOMPARE(selectors(), 0);
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        QVERIFY(!m_window->isMinimized());
        // What was chosen before the first of them.
        QVERIFY(!m_window->findChild<Tile*>(QStringLiteral("regionTile"))->isSelected());
    }

    void pickingIsOverOnceARecordingIsCountedDown()
    {
        clickTile("windowTile");
        auto* const picker = shownWindow<WindowHighlighter>();
        QVERIFY(picker != nullptr);
        bool isPicking = true;
        countDownAndCancel([&isPicking, picker] {
            isPicking = picker->isVisible();
            // Its own hotkey brings it back.
            picker->show();
            emit picker->windowClicked({30, 40, 500, 300});
            isPicking = isPicking || shownWindow<SCScreenshotWindow>() != nullptr;
        });
        QVERIFY(!isPicking);
        QTRY_VERIFY(m_window->findChild<Tile*>(QStringLiteral("windowTile"))->isEnabled());
        emit picker->windowClicked({30, 40, 500, 300});
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        picker->hide();
    }

    void regionsFrameIsThereAgainAfterACountdownThatCancelledAScreenshot()
    {
        clickTile("regionTile");
        emit shownWindow<AreaSelector>()->areaSelected(QRect(100, 80, 320, 240));
        clickTile("screenshotFullScreenTile");
        QVERIFY(shownWindow<DrawWindow>() == nullptr);
        bool isFramed = false;
        countDownAndCancel([&isFramed] { isFramed = shownWindow<DrawWindow>() != nullptr; });
        QVERIFY(isFramed);
        QVERIFY(shownWindow<DrawWindow>() != nullptr);
        QVERIFY(!m_window->isMinimized());
    }

    void savedScreenshotIsReportedAndEntered()
    {
        const messagebox::Recorder boxes;
        const QSignalSpy produced(m_window.get(), &SCMainWindow::fileProduced);
        clickTile("screenshotFullScreenTile");
        saveShownFrame();
        QCOMPARE(produced.size(), 1);
        const QString path = produced.at(0).at(0).toString();
        QCOMPARE(produced.at(0).at(1).toString(), QStringLiteral("screenshot"));
        QVERIFY(QFile::exists(path));
        QCOMPARE(boxes.calls().size(), 1U);
        QCOMPARE(boxes.calls().front().kind, messagebox::Kind::Information);
        QCOMPARE(boxes.calls().front().title, QStringLiteral("Screenshot Saved"));
        QCOMPARE(boxes.calls().front().text, "Screenshot saved to: " + path);
        QVERIFY(!m_window->isMinimized());
        const auto* const pages = m_window->findChild<QStackedWidget*>(QStringLiteral("pages"));
        QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("filesPage"));
        QVERIFY(m_window->findChild<QPushButton*>(QStringLiteral("filesTab"))->isChecked());
        QVERIFY(m_window->findChild<QPushButton*>(QStringLiteral("screenshotFilter"))->isChecked());
    }

    void nothingElseBeginsWhileAShotIsTaken_data()
    {
        QTest::addColumn<QString>("tile");
        QTest::newRow("screen, as by the hotkey") << "screenshotFullScreenTile";
        QTest::newRow("region") << "screenshotRegionTile";
    }

    void nothingElseBeginsWhileAShotIsTaken()
    {
        QFETCH(const QString, tile);
        const messagebox::Recorder boxes;
        const QSignalSpy produced(m_window.get(), &SCMainWindow::fileProduced);
        clickTile("screenshotFullScreenTile");
        auto* const frame = shownWindow<SCScreenshotWindow>();
        const QRect framed(30, 40, 500, 300);
        frame->setGeometry(framed);
        QRect shot;
        frame->setGrabber([&shot](QScreen&, const QRect& area) {
            shot = area;
            QPixmap image(20, 10);
            image.fill(Qt::green);
            return image;
        });
        QTimer::singleShot(0, m_window.get(), [this, &tile] { clickTile(tile); });
        frame->saveScreenshot();
        QCOMPARE(produced.size(), 1);
        QCOMPARE(shot, framed);
        QVERIFY(!frame->isVisible());
        QCOMPARE(selectors(), 0);
    }

    void closingTheWindowTakesTheScreenshotFrameAway()
    {
        clickTile("screenshotFullScreenTile");
        QVERIFY(m_window->close());
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(!m_window->isVisible());
    }

private:
    void clickTile(const char* name) const { clickTile(QLatin1String(name)); }
    void clickTile(const QString& name) const { QTest::mouseClick(m_window->findChild<Tile*>(name), Qt::LeftButton); }

    /// Presses the record button, does something while the countdown runs, and presses it again.
    void countDownAndCancel(const std::function<void()>& meanwhile) const
    {
        auto* const button = m_window->findChild<QPushButton*>(QStringLiteral("recordButton"));
        whenCountingDown(button, [button, &meanwhile] {
            meanwhile();
            button->click();
        });
        button->click();
    }

    static int selectors()
    {
        int count = 0;
        for (const QWidget* const window : QApplication::topLevelWidgets())
            count += qobject_cast<const AreaSelector*>(window) != nullptr && window->isVisible() ? 1 : 0;
        return count;
    }

    std::unique_ptr<SCMainWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestScreenshots>);

#include "test_screenshots.moc"
