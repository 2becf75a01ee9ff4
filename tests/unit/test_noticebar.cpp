// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/notices/noticebar.h"
#include "mainwindow/notices/noticequeue.h"
#include "tests/support/testrun.h"

#include <QAccessible>
#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

namespace {

constexpr Durations kLong{.noticeMs = 60'000, .noticeWithActionMs = 60'000};

/// A window of a field and a line for notices.
class NoticeWindow : public QWidget
{
public:
    NoticeWindow()
    {
        resize(600, 300);
        field.move(10, 200);
        line.setGeometry(0, 0, 600, 40);
        show();
        activateWindow();
    }

    QLineEdit field{this};
    NoticeBar line{this, kLong};
};

template <typename Part>
Part& part(const NoticeBar& line, const char* name)
{
    return *line.findChild<Part*>(QLatin1String(name));
}

QString shownText(const NoticeBar& line)
{
    return line.isVisible() ? part<QLabel>(line, "noticeText").text() : QString();
}

bool timePasses(const NoticeBar& line)
{
    return line.findChild<QTimer*>()->isActive();
}

QEnterEvent enterEvent()
{
    return {QPointF(5, 5), QPointF(5, 5), QPointF(5, 5)};
}

} // namespace

class TestNoticeBar : public QObject
{
    Q_OBJECT

private slots:
    // The pointer is over none of the windows.
    void init() { QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight()); }

    void noticeIsShownUntilItIsClosed_data()
    {
        QTest::addColumn<QString>("way");
        for (const char* way : {"button", "click on the text", "click beside it", "escape"})
            QTest::newRow(way) << way;
    }

    void noticeIsShownUntilItIsClosed()
    {
        QFETCH(const QString, way);
        NoticeWindow window;
        QVERIFY(!window.line.isVisible());
        QVERIFY(window.line.add({"one"}) && window.line.add({"two"}) && !window.line.add({"two"}));
        for (const char* text : {"one", "two"}) {
            QCOMPARE(shownText(window.line), QLatin1String(text));
            QVERIFY(!part<QPushButton>(window.line, "noticeAction").isVisible());
            close(window.line, way);
        }
        QVERIFY(!window.line.isVisible() && !window.line.hasNotice());
    }

    void actionIsCarriedOutOnceItsNoticeIsGone()
    {
        NoticeWindow window;
        QStringList done;
        window.line.add({"one", "Open folder", [&] {
                             done << shownText(window.line);
                             window.line.add({"three"});
                         }});
        window.line.add({"two"});
        auto& action = part<QPushButton>(window.line, "noticeAction");
        QVERIFY(action.isVisible());
        QCOMPARE(action.text(), QStringLiteral("Open folder"));
        action.click();
        QCOMPARE(done, QStringList{"two"});
        QVERIFY(!action.isVisible());
        close(window.line, "button");
        QCOMPARE(shownText(window.line), QStringLiteral("three"));
    }

    void buttonsAreReachedWithTheKeyboardAndTheFocusIsNotTaken()
    {
        NoticeWindow window;
        QVERIFY(QTest::qWaitForWindowActive(&window));
        window.field.setFocus();
        int done = 0;
        window.line.add({"one", "Act", [&done] { ++done; }});
        QVERIFY(window.field.hasFocus());
        auto& action = part<QPushButton>(window.line, "noticeAction");
        for (int presses = 0; presses < 3 && !action.hasFocus(); ++presses)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(action.hasFocus());
        QVERIFY(!timePasses(window.line));
        QTest::keyClick(&action, Qt::Key_Tab);
        QVERIFY(part<QPushButton>(window.line, "noticeClose").hasFocus());
        window.field.setFocus();
        QVERIFY(timePasses(window.line));
        QTest::keyClick(&action, Qt::Key_Space);
        QCOMPARE(done, 1);
        QVERIFY(!window.line.isVisible());
    }

    void timeStandsStillWhileThePointerIsOverIt()
    {
        NoticeWindow window;
        window.line.add({"one"});
        QVERIFY(timePasses(window.line));
        QEnterEvent enter = enterEvent();
        QCoreApplication::sendEvent(&window.line, &enter);
        QVERIFY(!timePasses(window.line));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&window.line, &leave);
        QVERIFY(timePasses(window.line));
        // The pointer does not leave what is gone.
        QCoreApplication::sendEvent(&window.line, &enter);
        close(window.line, "button");
        window.line.add({"two"});
        QVERIFY(timePasses(window.line));
    }

    void timeStandsStillWhileNobodySeesIt()
    {
        NoticeWindow window;
        window.showMinimized();
        window.line.add({"one"});
        QVERIFY(!timePasses(window.line));
        window.showNormal();
        QVERIFY(timePasses(window.line));
        window.hide();
        QVERIFY(!timePasses(window.line));
        window.show();
        QVERIFY(timePasses(window.line));
        QCOMPARE(shownText(window.line), QStringLiteral("one"));
    }

    void timeStandsStillWhileADialogBlocksTheWindow()
    {
        NoticeWindow window;
        {
            QDialog dialog;
            dialog.setModal(true);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowExposed(&dialog));
            window.line.add({"one"});
            QVERIFY(!timePasses(window.line));
        }
        QTRY_VERIFY(timePasses(window.line));
    }

    void noticeIsAnAlertToAssistiveTechnology()
    {
        NoticeWindow window;
        window.line.add({"The disk is full."});
        const QAccessibleInterface& seen = *QAccessible::queryAccessibleInterface(&window.line);
        QCOMPARE(seen.role(), QAccessible::AlertMessage);
        QCOMPARE(seen.text(QAccessible::Name), QStringLiteral("The disk is full."));
        QCOMPARE(part<QPushButton>(window.line, "noticeClose").accessibleName(), QStringLiteral("Close"));
        QVERIFY(QAccessible::queryAccessibleInterface(&window.field)->role() != QAccessible::AlertMessage);
    }

    void namesAreShownAsTheyAre()
    {
        NoticeWindow window;
        window.line.add({QStringLiteral("No program can open <b>a\u202egpj.exe</b>.")});
        QCOMPARE(shownText(window.line), QStringLiteral("No program can open <b>a[U+202E]gpj.exe</b>."));
        QCOMPARE(part<QLabel>(window.line, "noticeText").textFormat(), Qt::PlainText);
    }

    void longTextGetsMoreLines()
    {
        NoticeWindow window;
        window.line.add({"short"});
        const int heightPx = window.line.heightForWidth(600);
        window.line.clear();
        window.line.add({QStringLiteral("The recording ended because the disk is full. ").repeated(12)});
        QVERIFY(window.line.heightForWidth(600) > heightPx);
    }

private:
    static void close(NoticeBar& line, const QString& way)
    {
        auto& text = part<QLabel>(line, "noticeText");
        if (way == "button")
            part<QPushButton>(line, "noticeClose").click();
        else if (way == "click on the text")
            QTest::mouseClick(&text, Qt::LeftButton);
        else if (way == "click beside it")
            QTest::mouseClick(&line, Qt::LeftButton, {}, {2, 2});
        else
            QTest::keyClick(&part<QPushButton>(line, "noticeClose"), Qt::Key_Escape);
    }
};

REGISTER_TEST(testrun::gui<TestNoticeBar>);

#include "test_noticebar.moc"
