// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>

using Show = void (*)(QWidget*, const QString&, const QString&);
Q_DECLARE_METATYPE(Show)

class TestMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void boxShowsItsTextInTheProgramsLookUntilOkIsPressed_data()
    {
        QTest::addColumn<Show>("show");
        QTest::addColumn<int>("icon");
        QTest::newRow("information") << Show(&messagebox::information) << int(QMessageBox::Information);
        QTest::newRow("warning") << Show(&messagebox::warning) << int(QMessageBox::Warning);
        QTest::newRow("critical") << Show(&messagebox::critical) << int(QMessageBox::Critical);
    }

    void boxShowsItsTextInTheProgramsLookUntilOkIsPressed()
    {
        QFETCH(const Show, show);
        QFETCH(const int, icon);
        QWidget parent;
        parent.show();
        int shown = 0;
        QTimer::singleShot(0, &parent, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            ++shown;
            QCOMPARE(box->icon(), QMessageBox::Icon(icon));
            QCOMPARE(box->windowTitle(), QStringLiteral("Warning"));
            QCOMPARE(box->text(), QStringLiteral("No <b>microphone</b> device found!"));
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(box->parentWidget(), &parent);
            QFile styleSheet(QStringLiteral(":/res/style/message-box.qss"));
            QVERIFY(styleSheet.open(QIODevice::ReadOnly | QIODevice::Text));
            QCOMPARE(box->styleSheet(), QString::fromUtf8(styleSheet.readAll()));
            QCOMPARE(box->buttons().size(), 1);
            box->button(QMessageBox::Ok)->click();
        });
        show(&parent, QStringLiteral("Warning"), QStringLiteral("No <b>microphone</b> device found!"));
        QCOMPARE(shown, 1);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void boxNeedsNoParent()
    {
        bool shown = false;
        QTimer::singleShot(0, this, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            shown = box->parentWidget() == nullptr;
            box->reject();
        });
        messagebox::critical(nullptr, QStringLiteral("Error"), QStringLiteral("No more."));
        QVERIFY(shown);
    }

    void questionHasACheckBoxTheButtonThatSaysYesAndCancelAsDefault()
    {
        QWidget parent;
        parent.show();
        int shown = 0;
        QTimer::singleShot(0, &parent, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            const auto closed = qScopeGuard([box] { box->reject(); });
            ++shown;
            QCOMPARE(box->icon(), QMessageBox::Question);
            QCOMPARE(box->windowTitle(), QStringLiteral("Delete"));
            QCOMPARE(box->text(), QStringLiteral("Delete <b>all</b>?"));
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(box->parentWidget(), &parent);
            QVERIFY(box->isModal());
            QCOMPARE(box->checkBox()->text(), QStringLiteral("From disk as well."));
            QVERIFY(!box->checkBox()->isChecked());
            const auto* const yes = box->findChild<QPushButton*>(QStringLiteral("deleteButton"));
            QVERIFY(yes != nullptr);
            QCOMPARE(yes->text(), QStringLiteral("Yes, delete"));
            QCOMPARE(box->buttonRole(box->findChild<QPushButton*>(QStringLiteral("deleteButton"))),
                     QMessageBox::ActionRole);
            QCOMPARE(box->buttons().size(), 2);
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::Cancel));
            QCOMPARE(box->escapeButton(), box->button(QMessageBox::Cancel));
            QFile styleSheet(QStringLiteral(":/res/style/message-box.qss"));
            QVERIFY(styleSheet.open(QIODevice::ReadOnly | QIODevice::Text));
            QCOMPARE(box->styleSheet(), QString::fromUtf8(styleSheet.readAll()));
        });
        messagebox::ask(question(&parent));
        QCOMPARE(shown, 1);
    }

    void questionIsAnsweredAsTheUserPresses_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<bool>("check");
        for (const bool yes : {false, true}) {
            for (const bool check : {false, true})
                QTest::addRow("%s, %s", yes ? "yes" : "cancel", check ? "checked" : "unchecked") << yes << check;
        }
    }

    void questionIsAnsweredAsTheUserPresses()
    {
        QFETCH(const bool, yes);
        QFETCH(const bool, check);
        QTimer::singleShot(0, this, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            if (check)
                box->checkBox()->click();
            if (yes)
                box->findChild<QPushButton*>(QStringLiteral("deleteButton"))->click();
            else
                box->button(QMessageBox::Cancel)->click();
        });
        const messagebox::Answer answer = messagebox::ask(question(nullptr));
        QCOMPARE(answer.confirmed, yes);
        QCOMPARE(answer.checked, check);
    }

    void boxShowsWhatChangesTheDirectionOfAName()
    {
        QString shown;
        QTimer::singleShot(0, this, [&shown] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            shown = box->text();
            box->reject();
        });
        messagebox::warning(nullptr, QStringLiteral("Warning"), QStringLiteral("a\u202egpj.exe"));
        QCOMPARE(shown, QStringLiteral("a[U+202E]gpj.exe"));
    }

    void boxBesideItsWindowBlocksNothing()
    {
        QWidget window;
        window.show();
        messagebox::informBeside(window, QStringLiteral("Saved"), QStringLiteral("Saved <to>: a\u202eb"));
        const QPointer<QMessageBox> box = window.findChild<QMessageBox*>();
        QVERIFY(box != nullptr && box->isVisible());
        QVERIFY(!box->isModal());
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(box->icon(), QMessageBox::Information);
        QCOMPARE(box->windowTitle(), QStringLiteral("Saved"));
        QCOMPARE(box->text(), QStringLiteral("Saved <to>: a[U+202E]b"));
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QVERIFY(!box->styleSheet().isEmpty());
        box->button(QMessageBox::Ok)->click();
        QTRY_VERIFY(box.isNull());
        QVERIFY(window.isVisible());
    }

    void boxBesideItsWindowOffersActions()
    {
        QWidget window;
        window.show();
        QStringList run;
        const QList<messagebox::Action> actions{{QStringLiteral("Open"), [&run] { run.append("open"); }},
                                                {QStringLiteral("Show"), [&run] { run.append("show"); }}};
        for (const QString& text : {QStringLiteral("Open"), QStringLiteral("Show"), QStringLiteral("OK")}) {
            messagebox::informBeside(window, QStringLiteral("Saved"), QStringLiteral("text"), actions);
            const QPointer<QMessageBox> box = window.findChild<QMessageBox*>();
            QCOMPARE(box->buttons().size(), 3);
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::Ok));
            const QList<QAbstractButton*> buttons = box->buttons();
            for (QAbstractButton* const button : buttons)
                if (button->text() == text)
                    button->click();
            QTRY_VERIFY(box.isNull());
        }
        QCOMPARE(run, QStringList({"open", "show"}));
        messagebox::informBeside(window, QStringLiteral("Saved"), QStringLiteral("text"), actions);
        const QPointer<QMessageBox> box = window.findChild<QMessageBox*>();
        QTest::keyClick(box.data(), Qt::Key_Escape);
        QTRY_VERIFY(box.isNull());
        QCOMPARE(run.size(), 2);
    }

    void boxBesideItsWindowGoesWithIt_data()
    {
        QTest::addColumn<bool>("isMinimised");
        QTest::newRow("minimised") << true;
        QTest::newRow("hidden") << false;
    }

    void boxBesideItsWindowGoesWithIt()
    {
        QFETCH(const bool, isMinimised);
        QWidget window;
        window.show();
        messagebox::informBeside(window, QStringLiteral("Saved"), QStringLiteral("text"));
        const QPointer<QMessageBox> box = window.findChild<QMessageBox*>();
        if (isMinimised)
            window.showMinimized();
        else
            window.hide();
        QVERIFY(box.isNull() || !box->isVisible());
        QTRY_VERIFY(box.isNull());
    }

    void boxBesideAWindowThatADialogBlocksIsOverTheDialog()
    {
        QWidget window;
        window.show();
        QDialog dialog(&window);
        dialog.setWindowModality(Qt::ApplicationModal);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        messagebox::informBeside(window, QStringLiteral("Saved"), QStringLiteral("text"));
        const QPointer<QMessageBox> box = dialog.findChild<QMessageBox*>();
        QVERIFY(box != nullptr && box->isVisible());
        QTest::keyClick(box->windowHandle(), Qt::Key_Return);
        QTRY_VERIFY(box.isNull());
        QVERIFY(dialog.isVisible());
    }

    void recorderAnswersQuestions()
    {
        messagebox::Recorder recorder;
        QVERIFY(!messagebox::ask(question(nullptr)).confirmed);
        recorder.setAnswer({true, true});
        const messagebox::Answer answer = messagebox::ask(question(nullptr));
        QVERIFY(answer.confirmed && answer.checked);
        QCOMPARE(recorder.questions().size(), std::size_t{2});
        QCOMPARE(recorder.questions().back().text, QStringLiteral("Delete <b>all</b>?"));
        QVERIFY(recorder.calls().empty());
    }

    void recorderNotesInsteadOfShowing()
    {
        QWidget parent;
        const messagebox::Recorder recorder;
        messagebox::warning(&parent, QStringLiteral("Warning"), QStringLiteral("one"));
        messagebox::critical(nullptr, QStringLiteral("Error"), QStringLiteral("two"));
        messagebox::informBeside(parent, QStringLiteral("Saved"), QStringLiteral("three"));
        const std::vector<messagebox::Call>& calls = recorder.calls();
        QCOMPARE(calls.size(), std::size_t{3});
        QCOMPARE(calls[2].kind, messagebox::Kind::Information);
        QCOMPARE(calls[2].parent, &parent);
        QCOMPARE(calls[2].text, QStringLiteral("three"));
        QVERIFY(parent.findChild<QMessageBox*>() == nullptr);
        QCOMPARE(calls[0].kind, messagebox::Kind::Warning);
        QCOMPARE(calls[0].parent, &parent);
        QCOMPARE(calls[0].title, QStringLiteral("Warning"));
        QCOMPARE(calls[0].text, QStringLiteral("one"));
        QCOMPARE(calls[1].kind, messagebox::Kind::Critical);
        QVERIFY(calls[1].parent == nullptr);
        QCOMPARE(calls[1].title, QStringLiteral("Error"));
        QCOMPARE(calls[1].text, QStringLiteral("two"));
    }

    void innerRecorderNotesUntilItGoes()
    {
        const messagebox::Recorder outer;
        {
            const messagebox::Recorder inner;
            messagebox::information(nullptr, QStringLiteral("Window Info"), QStringLiteral("inner"));
            QCOMPARE(inner.calls().size(), std::size_t{1});
        }
        QVERIFY(outer.calls().empty());
        messagebox::information(nullptr, QStringLiteral("Window Info"), QStringLiteral("outer"));
        QCOMPARE(outer.calls().size(), std::size_t{1});
    }

private:
    static messagebox::Question question(QWidget* parent)
    {
        return {parent,
                QStringLiteral("Delete"),
                QStringLiteral("Delete <b>all</b>?"),
                QStringLiteral("From disk as well."),
                QStringLiteral("Yes, delete"),
                QStringLiteral("deleteButton")};
    }
};

REGISTER_TEST(testrun::gui<TestMessageBox>);
#include "test_messagebox.moc"
