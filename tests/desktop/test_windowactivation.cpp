// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/windowing/window_activation.h"
#include "tests/support/testrun.h"
#include "tests/support/x11clients.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

#include <memory>

namespace {

constexpr int kTimeoutMs = 10'000;

bool hasState(const QWidget& window, const char* state)
{
    return x11clients::statesOf(static_cast<uint32_t>(window.winId())).contains(QLatin1String(state));
}

} // namespace

/// What one program does with the window of another, under a window manager.
class TestWindowActivation : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<QWidget> m_other;

    quint64 handle() const { return m_window->winId(); }

    static std::unique_ptr<QWidget> shownWindow(const QPoint& position)
    {
        auto window = std::make_unique<QWidget>();
        window->setGeometry(QRect(position, QSize(320, 240)));
        window->show();
        return window;
    }

private slots:
    void init()
    {
        m_window = shownWindow(QPoint(200, 150));
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        m_other = shownWindow(QPoint(300, 200));
        QVERIFY(QTest::qWaitForWindowExposed(m_other.get()));
        QTRY_COMPARE_WITH_TIMEOUT(quint64{x11clients::topmostWindow()}, quint64{m_other->winId()}, kTimeoutMs);
        QVERIFY(QTest::qWaitForWindowActive(m_other.get()));
        // In the window manager's view as well, which answers what is asked of it by that view.
        QTRY_COMPARE_WITH_TIMEOUT(quint64{x11clients::activeWindow()}, quint64{m_other->winId()}, kTimeoutMs);
    }

    void cleanup()
    {
        m_window.reset();
        m_other.reset();
    }

    void numbersThatAreNoWindowAreRefused_data()
    {
        QTest::addColumn<quint64>("number");
        QTest::newRow("0") << quint64{0};
        QTest::newRow("1") << quint64{1};
        QTest::newRow("never given") << quint64{0x1ffffff1};
        QTest::newRow("wider than a window id") << (quint64{1} << 40);
    }

    void numbersThatAreNoWindowAreRefused()
    {
        QFETCH(const quint64, number);
        QVERIFY(!platform::isWindow(number));
        QVERIFY(!platform::isMinimized(number));
        QVERIFY(!platform::restoreWindow(number));
        QVERIFY(!platform::raiseWindow(number));
        QVERIFY(!platform::activateWindow(number));
        QVERIFY(!platform::demandAttention(number, 3));
    }

    void aDestroyedWindowIsNone()
    {
        quint64 number = 0;
        {
            QWidget window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            number = window.winId();
            QVERIFY(platform::isWindow(number));
        }
        QTRY_VERIFY(!platform::isWindow(number));
    }

    void aMinimisedWindowIsRestored()
    {
        QVERIFY(!platform::isMinimized(handle()));
        m_window->showMinimized();
        QTRY_VERIFY_WITH_TIMEOUT(platform::isMinimized(handle()), kTimeoutMs);
        QTest::qWait(300); // Qt reads the window's state some time after it changed
        QVERIFY(platform::restoreWindow(handle()));
        QTRY_VERIFY_WITH_TIMEOUT(!platform::isMinimized(handle()), kTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isMinimized(), kTimeoutMs);
    }

    void aCoveredWindowIsRaisedAndNotLeftTopmost()
    {
        const QRect before = m_window->geometry();
        QVERIFY(platform::raiseWindow(handle()));
        QTRY_COMPARE_WITH_TIMEOUT(quint64{x11clients::topmostWindow()}, handle(), kTimeoutMs);
        QVERIFY(!hasState(*m_window, "_NET_WM_STATE_ABOVE"));
        QCOMPARE(m_window->geometry(), before);
    }

    void aWindowGetsTheFocus()
    {
        QVERIFY(platform::activateWindow(handle()));
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void aWindowInTheBackgroundDemandsAttentionUntilItComesToTheFront()
    {
        QVERIFY(platform::demandAttention(handle(), 3));
        QTRY_VERIFY_WITH_TIMEOUT(hasState(*m_window, "_NET_WM_STATE_DEMANDS_ATTENTION"), kTimeoutMs);
        QVERIFY(platform::activateWindow(handle()));
        QTRY_VERIFY_WITH_TIMEOUT(!hasState(*m_window, "_NET_WM_STATE_DEMANDS_ATTENTION"), kTimeoutMs);
    }

    void theActiveWindowHasTheAttentionAlready()
    {
        QVERIFY(platform::demandAttention(m_other->winId(), 3));
        QTest::qWait(200);
        QVERIFY(!hasState(*m_other, "_NET_WM_STATE_DEMANDS_ATTENTION"));
    }
};

REGISTER_TEST(testrun::gui<TestWindowActivation>);
#include "test_windowactivation.moc"
