// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/sizefields.h"
#include "tests/support/testrun.h"

#include <QAccessible>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

/// What is typed for width and height, between 192x142 and 1920x1080.
class TestSizeFields : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto* const layout = new QVBoxLayout(m_window.get());
        for (QWidget* const part : std::initializer_list<QWidget*>{m_width = new QLineEdit, m_height = new QLineEdit,
                                   m_other = new QPushButton})
            layout->addWidget(part);
        m_fields = std::make_unique<SizeFields>(*m_width, *m_height, [this] { return m_rules; });
        m_rules.ratio = 0.0;
        m_fields->show({640, 360});
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_fields.reset();
        m_window.reset();
    }

    void enteredSizeIsReported_data()
    {
        QTest::addColumn<QString>("width");
        QTest::addColumn<QString>("height");
        QTest::addColumn<QSize>("size");
        QTest::newRow("width") << "800"
                               << "360" << QSize(800, 360);
        QTest::newRow("height") << "640"
                                << "480" << QSize(640, 480);
        QTest::newRow("both") << "800"
                              << "600" << QSize(800, 600);
        QTest::newRow("blanks around it") << " 800 "
                                          << "360" << QSize(800, 360);
        QTest::newRow("smallest") << "192"
                                  << "142" << QSize(192, 142);
        QTest::newRow("largest") << "1920"
                                 << "1080" << QSize(1920, 1080);
    }

    void enteredSizeIsReported()
    {
        QFETCH(const QString, width);
        QFETCH(const QString, height);
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        type(*m_width, width);
        type(*m_height, height);
        QCOMPARE(entered.size(), 0);
        QTest::keyClick(m_height, Qt::Key_Return);
        QCOMPARE(entered.size(), 1);
        QTEST(entered.at(0).at(0).toSize(), "size");
        // Until the receiver shows the new one.
        QCOMPARE(shown(), QStringLiteral("640x360"));
    }

    void enteredTextIsSelected()
    {
        connect(m_fields.get(), &SizeFields::entered, this, [this] { m_fields->show({802, 360}); });
        type(*m_width, QStringLiteral("801"));
        QTest::keyClick(m_width, Qt::Key_Return);
        QCOMPARE(m_width->selectedText(), QStringLiteral("802"));
    }

    void whatIsTypedStaysWhileTheSizeIsTheSame()
    {
        type(*m_width, QStringLiteral("80"));
        m_fields->show({640, 360});
        QCOMPARE(shown(), QStringLiteral("80x360"));
        m_fields->show({640, 480});
        QCOMPARE(shown(), QStringLiteral("640x480"));
    }

    void nonsenseIsMarkedReportedAndUndoneByEscape_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"", "abc", "12a", "0", "-640", "1921", "191", "6.4", "99999999999"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }

    void nonsenseIsMarkedReportedAndUndoneByEscape()
    {
        QFETCH(const QString, text);
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        const QSignalSpy refused(m_fields.get(), &SizeFields::refused);
        type(*m_width, text);
        QTest::keyClick(m_width, Qt::Key_Return);
        QCOMPARE(entered.size(), 0);
        const QString reason = QStringLiteral("The width has to be a whole number from 192 to 1920.");
        QCOMPARE(refused.size(), 1);
        QCOMPARE(refused.at(0).at(0).toString(), reason);
        QVERIFY(isMarked(*m_width) && !isMarked(*m_height));
        QCOMPARE(m_width->toolTip(), reason);
        QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(m_width);
        QCOMPARE(accessible->text(QAccessible::Description), reason);
        QCOMPARE(m_width->text(), text);
        QTest::keyClick(m_width, Qt::Key_Escape);
        QCOMPARE(shown(), QStringLiteral("640x360"));
        QVERIFY(!isMarked(*m_width));
        QCOMPARE(accessible->text(QAccessible::Description), QString());
    }

    void theKeyboardGoesToTheFieldThatIsWrong()
    {
        const QSignalSpy refused(m_fields.get(), &SizeFields::refused);
        type(*m_height, QStringLiteral("9"));
        type(*m_width, QStringLiteral("800"));
        QTest::keyClick(m_width, Qt::Key_Return);
        QCOMPARE(refused.at(0).at(0).toString(),
                 QStringLiteral("The height has to be a whole number from 142 to 1080."));
        QVERIFY(m_height->hasFocus() && isMarked(*m_height) && !isMarked(*m_width));
        QCOMPARE(m_height->selectedText(), QStringLiteral("9"));
    }

    void markGoesWhenTheFieldIsCorrected()
    {
        type(*m_width, QStringLiteral("x"));
        QTest::keyClick(m_width, Qt::Key_Return);
        QVERIFY(isMarked(*m_width));
        QTest::keyClicks(m_width, QStringLiteral("8"));
        QVERIFY(!isMarked(*m_width));
        QCOMPARE(m_width->toolTip(), QString());
    }

    void whatIsNotEnteredIsDroppedWithTheFields()
    {
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        type(*m_width, QStringLiteral("800"));
        m_height->setFocus();
        QCOMPARE(shown(), QStringLiteral("800x360"));
        m_other->setFocus();
        QCOMPARE(shown(), QStringLiteral("640x360"));
        QCOMPARE(entered.size(), 0);
    }

    void escapeWithNothingTypedIsLeftToOthers()
    {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QVERIFY(!m_fields->eventFilter(m_width, &escape));
        type(*m_width, QStringLiteral("800"));
        QVERIFY(m_fields->eventFilter(m_width, &escape));
    }

    void enterWithNothingTypedReportsNothing()
    {
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        QTest::keyClick(m_width, Qt::Key_Return);
        QCOMPARE(entered.size(), 0);
    }

    void lockedRatioGivesTheOtherLength_data()
    {
        QTest::addColumn<bool>("isWidth");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QSize>("size");
        QTest::newRow("width") << true << "800" << QSize(800, 450);
        QTest::newRow("width, rounded") << true << "801" << QSize(801, 451);
        QTest::newRow("height") << false << "720" << QSize(1280, 720);
        // 142 * 16 / 9
        QTest::newRow("smallest width") << true << "253" << QSize(253, 142);
        QTest::newRow("width of too little height") << true << "252" << QSize();
        QTest::newRow("height of too much width") << false << "1081" << QSize();
    }

    void lockedRatioGivesTheOtherLength()
    {
        QFETCH(const bool, isWidth);
        QFETCH(const QString, text);
        QFETCH(const QSize, size);
        m_rules.ratio = 16.0 / 9.0;
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        QLineEdit& field = isWidth ? *m_width : *m_height;
        type(field, text);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(entered.isEmpty() ? QSize() : entered.at(0).at(0).toSize(), size);
        QCOMPARE(isMarked(field), size.isEmpty());
    }

    void lockedRatioGoesByTheFieldThatWasTyped()
    {
        m_rules.ratio = 16.0 / 9.0;
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        type(*m_width, QStringLiteral("800"));
        QTest::keyClick(m_height, Qt::Key_Return);
        QCOMPARE(entered.at(0).at(0).toSize(), QSize(800, 450));
    }

    void fieldsThatCannotBeEditedAreReadOnly()
    {
        const QSignalSpy entered(m_fields.get(), &SizeFields::entered);
        type(*m_width, QStringLiteral("800"));
        m_fields->setEditable(false);
        QVERIFY(m_width->isReadOnly() && m_height->isReadOnly());
        QCOMPARE(shown(), QStringLiteral("640x360"));
        m_fields->setEditable(true);
        QVERIFY(!m_width->isReadOnly() && !m_height->isReadOnly());
    }

    void newSizeTakesTheMarkAway()
    {
        type(*m_width, QStringLiteral("x"));
        QTest::keyClick(m_width, Qt::Key_Return);
        m_fields->show({320, 240});
        QCOMPARE(shown(), QStringLiteral("320x240"));
        QVERIFY(!isMarked(*m_width));
        QVERIFY(m_fields->shows({320, 240}) && !m_fields->shows({640, 360}));
    }

private:
    static void type(QLineEdit& field, const QString& text)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClick(&field, Qt::Key_Backspace);
        QTest::keyClicks(&field, text);
    }

    static bool isMarked(const QLineEdit& field) { return field.property("wrong").toBool(); }

    QString shown() const { return m_width->text() + u'x' + m_height->text(); }

    std::unique_ptr<QWidget> m_window;
    QLineEdit* m_width = nullptr;
    QLineEdit* m_height = nullptr;
    QPushButton* m_other = nullptr;
    SizeFields::Rules m_rules{{192, 142}, {1920, 1080}, 0.0};
    std::unique_ptr<SizeFields> m_fields;
};

REGISTER_TEST(testrun::gui<TestSizeFields>);

#include "test_sizefields.moc"
