// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/focusring.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include <memory>

class TestFocusRing : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 200);
        auto* const card = new QWidget(m_window.get());
        card->setGeometry(50, 40, 200, 100);
        m_first = makeControl(card, {10, 10, 32, 16});
        m_second = makeControl(card, {10, 50, 32, 16});
        m_other = new QLineEdit(m_window.get());
        m_ring = new FocusRing(m_window.get(), {m_first, m_second});
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_other->setFocus();
    }

    void surroundsTheControlThatHasTheFocus()
    {
        QVERIFY(!m_ring->isVisible());
        m_first->setFocus();
        QVERIFY(m_ring->isVisible());
        QCOMPARE(m_ring->geometry(), QRect(57, 47, 38, 22));
        m_second->setFocus();
        QCOMPARE(m_ring->geometry(), QRect(57, 87, 38, 22));
        m_other->setFocus();
        QVERIFY(!m_ring->isVisible());
    }

    void followsTheControl()
    {
        m_first->setFocus();
        m_first->move(20, 30);
        QCOMPARE(m_ring->geometry().topLeft(), QPoint(67, 67));
        m_second->move(100, 50);
        QCOMPARE(m_ring->geometry().topLeft(), QPoint(67, 67));
        // Qt hands the focus of a hidden control on.
        m_first->hide();
        QCOMPARE(m_ring->geometry().topLeft(), QPoint(147, 87));
        m_second->clearFocus();
        QVERIFY(!m_ring->isVisible());
    }

    void isALineAndNothingElse()
    {
        m_first->setFocus();
        const QImage image = m_window->grab().toImage();
        const QRect ring = m_ring->geometry();
        const QColor line(0x00, 0x7a, 0xcc);
        QCOMPARE(image.pixelColor(ring.center().x(), ring.top()), line);
        QCOMPARE(image.pixelColor(ring.center().x(), ring.bottom()), line);
        QCOMPARE(image.pixelColor(ring.left(), ring.center().y()), line);
        QVERIFY(image.pixelColor(ring.center().x(), ring.top() + 2) != line);
    }

    void leavesTheMouseToWhatLiesBelow()
    {
        m_first->setFocus();
        QCOMPARE(m_window->childAt(m_ring->geometry().center()), m_first);
    }

private:
    static QWidget* makeControl(QWidget* parent, const QRect& geometry)
    {
        auto* const control = new QWidget(parent);
        control->setGeometry(geometry);
        control->setFocusPolicy(Qt::StrongFocus);
        return control;
    }

    std::unique_ptr<QWidget> m_window;
    QWidget* m_first = nullptr;
    QWidget* m_second = nullptr;
    QWidget* m_other = nullptr;
    FocusRing* m_ring = nullptr;
};

REGISTER_TEST(testrun::gui<TestFocusRing>);

#include "test_focusring.moc"
