// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/pagescroll.h"
#include "mainwindow/sidetab.h"
#include "mainwindow/windowfit.h"
#include "tests/support/windowtest.h"
#include "ui_scmainwindow.h"
#include "widgets/stylesheet.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

#include <memory>

namespace {

constexpr QRect kLarge(0, 0, 1920, 1080);
constexpr QSize kFirstSize(832, 460);

} // namespace

/// The main window's form on screens of all sizes.
class TestWindowFit : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        m_room = kLarge;
        m_window = std::make_unique<QMainWindow>();
        m_window->setWindowFlag(Qt::FramelessWindowHint);
        m_ui.setupUi(m_window.get());
        applyStyleSheet(*m_window, QStringLiteral(":/res/style/main-window.qss"));
        m_fit = new WindowFit({*m_window, *m_ui.titleBar, *m_ui.sideBar, *m_ui.pages, *m_ui.recordingScroll},
                              [this] { return m_room; });
    }

    void cleanup() { m_window.reset(); }

    void largeScreenShowsTheWindowWhole()
    {
        m_window->show();
        QCOMPARE(m_window->size(), kFirstSize);
        QCOMPARE(m_window->minimumSize(), m_fit->neededSize());
        expectWhole();
        QCOMPARE(m_ui.recordingTab->width(), 138);
    }

    /// What is needed is what the layouts need, to the pixel.
    void smallestWindowOfALargeScreenScrollsNothing()
    {
        m_window->show();
        m_window->resize(1, 1);
        QTRY_COMPARE(m_window->size(), m_fit->neededSize());
        expectWhole();
        const QSize needed = m_fit->neededSize();
        m_ui.recordingScroll->setMinimumSize(m_ui.recordingOptions->minimumSizeHint());
        QTRY_COMPARE(m_window->centralWidget()->minimumSizeHint(), needed);
    }

    void smallScreenHasAWindowThatFits_data()
    {
        QTest::addColumn<QSize>("screen");
        QTest::newRow("800x600") << QSize(800, 600);
        QTest::newRow("1024x600 at 1.25") << QSize(819, 480);
        QTest::newRow("with panels") << QSize(720, 440);
        QTest::newRow("smaller yet") << QSize(480, 320);
    }

    void smallScreenHasAWindowThatFits()
    {
        QFETCH(const QSize, screen);
        m_room = {QPoint(), screen};
        m_window->show();
        QCOMPARE(m_window->width(), screen.width());
        QVERIFY(m_window->height() <= screen.height());
        const bool isTooWide = m_fit->neededSize().width() > screen.width();
        QCOMPARE(m_ui.recordingTab->isFolded(), isTooWide);
        QCOMPARE(m_ui.filesTab->isFolded(), isTooWide);
        const QSize smallest = m_window->minimumSize();
        QCOMPARE(smallest.boundedTo(screen), smallest);
        for (const QWidget* const part :
             std::initializer_list<QWidget*>{m_ui.titleBar, m_ui.closeBtn, m_ui.recordButton, m_ui.sideBar}) {
            const QRect seen(part->mapTo(m_window.get(), QPoint()), part->size());
            QVERIFY2(QRect(QPoint(), screen).contains(seen), qPrintable(part->objectName()));
        }
        QCOMPARE(m_ui.recordButton->height(), 44);
    }

    void whatDoesNotFitScrollsToTheControlThatHasTheKeyboard()
    {
        m_room = {0, 0, 819, 360};
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(m_ui.recordingScroll->verticalScrollBar()->maximum() > 0);
        QCOMPARE(m_ui.recordingScroll->horizontalScrollBar()->maximum(), 0);
        m_ui.fullScreenTile->setFocus();
        while (!m_ui.changeLocationButton->hasFocus())
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        const QRect seen(m_ui.changeLocationButton->mapTo(m_ui.recordingScroll->viewport(), QPoint()),
                         m_ui.changeLocationButton->size());
        QVERIFY(m_ui.recordingScroll->viewport()->rect().contains(seen));
    }

    /// The controls are as wide with the scroll bar as without it.
    void scrollBarIsInThePagesMargin()
    {
        m_room = {0, 0, 1000, 360};
        m_window->show();
        QTRY_VERIFY(m_ui.recordingScroll->verticalScrollBar()->isVisible());
        QTRY_COMPARE(m_ui.sourceCard->width(), m_ui.recordButton->width());
    }

    void foldedTabHasItsTextForAToolTipAndForReaders()
    {
        m_room = {0, 0, 640, 600};
        m_window->show();
        QTRY_COMPARE(m_ui.screenshotTab->width(), SideTab::kFoldedWidthPx);
        const auto* const reader = QAccessible::queryAccessibleInterface(m_ui.screenshotTab);
        QCOMPARE(reader->text(QAccessible::Name), QStringLiteral("Screenshot"));
        QCOMPARE(tipOf(*m_ui.screenshotTab), QStringLiteral("Screenshot"));
        m_room = kLarge;
        emit QGuiApplication::primaryScreen()->availableGeometryChanged(m_room);
        QTRY_VERIFY(!m_ui.screenshotTab->isFolded());
        // The text is in the tab.
        QCOMPARE(tipOf(*m_ui.screenshotTab), QString());
    }

    void screenThatChangesTakesRoomAndGivesItBack()
    {
        m_window->show();
        m_window->move(900, 500);
        m_room = {0, 0, 640, 400};
        emit QGuiApplication::primaryScreen()->availableGeometryChanged(m_room);
        QCOMPARE(m_window->size(), m_room.size());
        QVERIFY(m_room.contains(m_window->geometry()));
        QVERIFY(m_ui.recordingTab->isFolded());
        m_room = kLarge;
        emit QGuiApplication::primaryScreen()->availableGeometryChanged(m_room);
        QCOMPARE(m_window->size(), kFirstSize);
        expectWhole();
    }

    void sizeThatTheUserGaveStays()
    {
        m_window->show();
        m_window->resize(1000, 600);
        m_ui.hotkeyLabel->setText(QStringLiteral("F9"));
        emit QGuiApplication::primaryScreen()->availableGeometryChanged(m_room);
        QCOMPARE(m_window->size(), QSize(1000, 600));
    }

    void longerTextsMakeTheWindowLarger()
    {
        m_window->show();
        m_ui.micLabel->setText(QString(60, u'm'));
        QTRY_VERIFY(m_window->width() > kFirstSize.width());
        expectWhole();
        QCOMPARE(m_window->minimumSize(), m_fit->neededSize());
    }

private:
    /// What the system's tool tip event shows.
    static QString tipOf(QWidget& widget)
    {
        QToolTip::hideText();
        if (!QTest::qWaitFor([] { return !QToolTip::isVisible(); }))
            return QStringLiteral("the last one stays");
        const QPoint middle = widget.rect().center();
        QHelpEvent event(QEvent::ToolTip, middle, widget.mapToGlobal(middle));
        QCoreApplication::sendEvent(&widget, &event);
        return QToolTip::text();
    }

    void expectWhole()
    {
        QTRY_COMPARE(m_ui.recordingScroll->verticalScrollBar()->maximum(), 0);
        QTRY_COMPARE(m_ui.recordingScroll->horizontalScrollBar()->maximum(), 0);
        QVERIFY(!m_ui.recordingTab->isFolded());
    }

    QRect m_room;
    std::unique_ptr<QMainWindow> m_window;
    Ui::SCMainWindow m_ui{};
    WindowFit* m_fit = nullptr;
};

REGISTER_TEST(windowtest::run<TestWindowFit>);

#include "test_windowfit.moc"
