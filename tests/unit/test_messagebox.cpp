#include "widgets/messagebox.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
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

    void recorderNotesInsteadOfShowing()
    {
        QWidget parent;
        const messagebox::Recorder recorder;
        messagebox::warning(&parent, QStringLiteral("Warning"), QStringLiteral("one"));
        messagebox::critical(nullptr, QStringLiteral("Error"), QStringLiteral("two"));
        const std::vector<messagebox::Call>& calls = recorder.calls();
        QCOMPARE(calls.size(), std::size_t{2});
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
};

QTEST_MAIN(TestMessageBox)
#include "test_messagebox.moc"
