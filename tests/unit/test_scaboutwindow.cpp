// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/webaddresses.h"
#include "dialogs/scaboutwindow.h"
#include "tests/support/addresses.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QEnterEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

namespace {

constexpr char kDescription[] =
    "Tolvaran Kestrano screen recorder is a great tool for recording screen and taking screenshot.";

} // namespace

class TestSCAboutWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<SCAboutWindow>(nullptr);
        m_window->move(200, 150);
        m_window->show();
    }

    void saysWhatTheProgramIs()
    {
        QCOMPARE(text("titleLabel"), QStringLiteral("About"));
        QCOMPARE(text("productNameLabel"), QStringLiteral("Kestrano"));
        QCOMPARE(text("versionCaptionLabel"), QStringLiteral("Version:"));
        QCOMPARE(text("versionLabel"), QStringLiteral("1.0.0"));
        QCOMPARE(text("linkCaptionLabel"), QStringLiteral("To learn more about us, please visit:"));
        QCOMPARE(child<QPlainTextEdit>("descriptionEdit")->toPlainText(), QLatin1String(kDescription));
    }

    void linkIsTheProductPageInTheLinksColour()
    {
        const QString address = QLatin1String(webaddresses::kHomePage);
        QCOMPARE(
            text("homeURLLabel"),
            QStringLiteral("<a style=\"color: #F35627; text-decoration: underline;\" href=\"%1\">%1</a>").arg(address));
        QVERIFY(child<QLabel>("homeURLLabel")->openExternalLinks());
    }

    void clickOnTheLinkOpensTheProductPageOnce()
    {
        const OpenedAddresses browser({"https", "http"});
        auto* const label = child<QLabel>("homeURLLabel");
        QTest::mouseClick(label, Qt::LeftButton, {}, label->rect().center());
        // A second time would be queued.
        QCoreApplication::processEvents();
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kHomePage))});
    }

    void linkIsOpenedByTheKeyboardAsWell()
    {
        const OpenedAddresses browser({"https", "http"});
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QCOMPARE(m_window->focusWidget(), child<QLabel>("homeURLLabel"));
        // To the link within the label.
        QTest::keyClick(m_window->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(m_window->focusWidget(), Qt::Key_Return);
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kHomePage))});
    }

    void reportedLinkIsOpenedOnce()
    {
        const OpenedAddresses browser({"https"});
        emit child<QLabel>("homeURLLabel")->linkActivated(QStringLiteral("https://www.kestrano.example/other"));
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl("https://www.kestrano.example/other")});
    }

    void descriptionTakesNothingFromTheUserAndIsWhollyShown()
    {
        const auto* const box = child<QPlainTextEdit>("descriptionEdit");
        QVERIFY(box->isReadOnly());
        QCOMPARE(box->textInteractionFlags(), Qt::NoTextInteraction);
        QCOMPARE(box->viewport()->cursor().shape(), Qt::ArrowCursor);
        const int lines = static_cast<int>(box->document()->size().height());
        QVERIFY(lines * box->fontMetrics().lineSpacing() <= box->viewport()->height());
    }

    void draggingTheTitleBarMovesTheWindow()
    {
        auto* const bar = child<QWidget>("titleBar");
        const QPoint before = m_window->pos();
        drag(*bar, {60, 20}, {100, 50}, Qt::LeftButton);
        QCOMPARE(m_window->pos(), before + QPoint(40, 30));
    }

    void draggingTheTitleMovesTheWindowAsWell()
    {
        const QPoint before = m_window->pos();
        auto* const title = child<QWidget>("titleLabel");
        drag(*title, {5, 5}, {25, 15}, Qt::LeftButton);
        QCOMPARE(m_window->pos(), before + QPoint(20, 10));
    }

    void draggingElsewhereDoesNotMoveTheWindow()
    {
        const QPoint before = m_window->pos();
        for (const char* name : {"productNameLabel", "descriptionEdit", "closeBtn", "contents"}) {
            drag(*child<QWidget>(name), {4, 4}, {60, 50}, Qt::LeftButton);
            QCOMPARE(m_window->pos(), before);
        }
    }

    void anotherButtonDoesNotMoveTheWindow()
    {
        const QPoint before = m_window->pos();
        drag(*child<QWidget>("titleBar"), {60, 20}, {100, 50}, Qt::RightButton);
        QCOMPARE(m_window->pos(), before);
    }

    void closeButtonClosesAndShowsItsLightIconUnderThePointer()
    {
        auto* const button = child<QPushButton>("closeBtn");
        QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
        QCoreApplication::sendEvent(button, &enter);
        QCOMPARE(render(button->icon()), render(QIcon(":/res/forms/images/close-white.svg")));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(button, &leave);
        QCOMPARE(render(button->icon()), render(QIcon(":/res/forms/images/close.svg")));
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!m_window->isVisible());
    }

    void styleSheetIsItsOwn() { QVERIFY(m_window->styleSheet().contains(QLatin1String("homeURLLabel"))); }

private:
    template <typename Widget>
    Widget* child(const char* name) const
    {
        return m_window->findChild<Widget*>(QLatin1String(name));
    }

    QString text(const char* name) const { return child<QLabel>(name)->text(); }
    static QImage render(const QIcon& icon) { return icon.pixmap(20, 20).toImage(); }

    /// As the system brings it: what a widget does not take goes to the one that it lies in.
    static void drag(QWidget& widget, const QPoint& from, const QPoint& to, Qt::MouseButton button)
    {
        const QPoint start = widget.mapToGlobal(from);
        const QPoint end = widget.mapToGlobal(to);
        QMouseEvent press(QEvent::MouseButtonPress, from, start, button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &press);
        QMouseEvent move(QEvent::MouseMove, widget.mapFromGlobal(end), end, Qt::NoButton, button, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &move);
        QMouseEvent release(QEvent::MouseButtonRelease, widget.mapFromGlobal(end), end, button, Qt::NoButton,
                            Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &release);
    }

    std::unique_ptr<SCAboutWindow> m_window;
};

REGISTER_TEST(windowtest::run<TestSCAboutWindow>);

#include "test_scaboutwindow.moc"
