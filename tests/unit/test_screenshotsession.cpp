// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/regionoverlays.h"
#include "mainwindow/screenshotsession.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/windowhighlighter.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/support/messagecapture.h"
#include "tests/support/shownframe.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QScreen>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

/// Screenshots of any window, from the choice of the area to the report of the file.
class TestScreenshotSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        windowtest::resetSettings();
        m_recording = RecordingState::Idle;
        m_window = std::make_unique<QWidget>();
        m_region = new RegionOverlays(m_window.get());
        m_session = new ScreenshotSession(m_window.get(), *m_region, m_activity, 20);
        connect(m_session, &ScreenshotSession::restoreRequested, m_window.get(), &QWidget::showNormal);
        m_window->show();
    }

    void cleanup() { m_window.reset(); }

    void pickedWindowIsFramedAsFarAsItIsOnAScreen_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QRect>("framed");
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QRect inside = screen.adjusted(50, 40, -50, -60);
        QTest::newRow("maximised, with borders beyond the screen") << screen.adjusted(-8, -8, 8, 8) << screen;
        QTest::newRow("half beyond the left edge")
            << QRect(screen.left() - 200, 40, 400, 300) << QRect(screen.left(), 40, 200, 300);
        QTest::newRow("all but a strip beyond the right edge")
            << QRect(screen.right() - 9, 40, 400, 300) << QRect(screen.right() - 99, 40, 100, 300);
        QTest::newRow("on the screen") << inside << inside;
    }

    void pickedWindowIsFramedAsFarAsItIsOnAScreen()
    {
        QFETCH(const QRect, window);
        QFETCH(const QRect, framed);
        m_session->selectWindow();
        emit shownWindow<WindowHighlighter>()->windowClicked(window);
        QCOMPARE(shownWindow<SCScreenshotWindow>()->geometry(), framed);
        QVERIFY(m_session->isActive());
        QVERIFY(m_window->isMinimized());
    }

    void smallRegionIsFramedAsLargeAsAFrameMustBeOnTheScreen()
    {
        m_session->selectRegion();
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        emit shownWindow<AreaSelector>()->areaSelected(QRect(screen.bottomRight() - QPoint(20, 10), QSize(5, 5)));
        QCOMPARE(shownWindow<SCScreenshotWindow>()->geometry(),
                 QRect(screen.bottomRight() - QPoint(99, 99), QSize(100, 100)));
    }

    void cancelledSelectionRestoresTheWindow()
    {
        m_session->selectRegion();
        QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr);
        QVERIFY(m_window->isMinimized());
        QTest::keyClick(shownWindow<AreaSelector>(), Qt::Key_Escape);
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QVERIFY(!m_window->isMinimized());
        QVERIFY(!m_session->isActive());
    }

    void windowThatWasMinimisedStaysMinimised()
    {
        m_window->showMinimized();
        const QSignalSpy restored(m_session, &ScreenshotSession::restoreRequested);
        m_session->frameScreen();
        m_session->cancel();
        QCOMPARE(restored.size(), 0);
    }

    /// A dialog may have been opened over the first frame.
    void frameThatIsShownAgainIsReportedAgain()
    {
        const QSignalSpy changed(m_session, &ScreenshotSession::activeChanged);
        m_session->frameScreen();
        m_session->frameScreen();
        QCOMPARE(changed.size(), 2);
        m_session->cancel();
        QVERIFY(!m_session->isFraming());
        m_session->pickWindow();
        QVERIFY(m_session->isActive() && !m_session->isFraming());
        m_session->cancelSelections();
        QCOMPARE(changed.size(), 3);
    }

    void requestIsLoggedAndIgnoredWhileNoScreenshotMayBeTaken_data()
    {
        QTest::addColumn<RecordingState>("recording");
        QTest::newRow("recording") << RecordingState::Recording;
        QTest::newRow("countdown") << RecordingState::Countdown;
    }

    void requestIsLoggedAndIgnoredWhileNoScreenshotMayBeTaken()
    {
        QFETCH(const RecordingState, recording);
        m_recording = recording;
        const MessageCapture messages;
        m_session->frameScreen();
        m_session->selectRegion();
        m_session->selectWindow();
        QCOMPARE(messages.texts().filter(QStringLiteral("Screenshot request ignored")).size(), 3);
        QVERIFY(!m_session->isActive());
        QVERIFY(!m_window->isMinimized());
    }

    /// What began before a recording ends without restoring the window, which the recording has minimised.
    void recordingKeepsTheWindowMinimised()
    {
        const QSignalSpy restored(m_session, &ScreenshotSession::restoreRequested);
        m_session->frameScreen();
        m_recording = RecordingState::Recording;
        m_session->cancel();
        QVERIFY(shownWindow<SCScreenshotWindow>() == nullptr);
        QCOMPARE(restored.size(), 0);
    }

    void screenshotThatCannotBeSavedIsReported()
    {
        const messagebox::Recorder boxes;
        openSettings()->setValue(settingskeys::kScreenshotFormat, QStringLiteral("nonsense"));
        m_session->frameScreen();
        saveShownFrame();
        QCOMPARE(boxes.calls().size(), 1U);
        QCOMPARE(boxes.calls().front().kind, messagebox::Kind::Warning);
        QCOMPARE(boxes.calls().front().title, QStringLiteral("Screenshot Error"));
        QVERIFY(
            boxes.calls().front().text.startsWith(QLatin1String("Screenshot error: Failed to save screenshot to ")));
        QVERIFY(shownWindow<SCScreenshotWindow>() != nullptr);
    }

private:
    RecordingState m_recording = RecordingState::Idle;
    Activity m_activity{
        {[this] { return m_recording; }, {}, {}, [this] { return m_session->isGrabbing(); }, {}, {}, {}}};
    std::unique_ptr<QWidget> m_window;
    RegionOverlays* m_region = nullptr;
    ScreenshotSession* m_session = nullptr;
};

REGISTER_TEST(windowtest::run<TestScreenshotSession>);

#include "test_screenshotsession.moc"
