#include "tests/support/messagecapture.h"
#include "widgets/stylesheet.h"

#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

class TestStyleSheet : public QObject
{
    Q_OBJECT

private slots:
    void missingStyleSheetIsWarnedOfTwiceAndKeepsTheLook()
    {
        QWidget widget;
        const QString look = QStringLiteral("background-color: #28282E");
        widget.setStyleSheet(look);
        const MessageCapture messages;
        QVERIFY(!applyStyleSheet(widget, QStringLiteral(":/res/style/none.qss")));
        const QStringList warnings = messages.texts(QtWarningMsg);
        QCOMPARE(warnings.size(), 2);
        QCOMPARE(warnings.at(0), QStringLiteral("Failed to load stylesheet from: \":/res/style/none.qss\""));
        QVERIFY2(warnings.at(1).startsWith(QLatin1String("Error: \"")), qPrintable(warnings.at(1)));
        QVERIFY2(warnings.at(1).size() > QStringLiteral("Error: \"\"").size(), qPrintable(warnings.at(1)));
        QCOMPARE(widget.styleSheet(), look);
    }

    void styleSheetThatIsThereReplacesTheLook()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("look.qss")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QByteArray look("QWidget { color: #99A1B0; }");
        QCOMPARE(file.write(look), look.size());
        file.close();
        QWidget widget;
        const MessageCapture messages;
        QVERIFY(applyStyleSheet(widget, file.fileName()));
        QCOMPARE(widget.styleSheet(), QLatin1String(look));
        QCOMPARE(messages.texts(), QStringList{QStringLiteral("Loaded stylesheet from: \"%1\"").arg(file.fileName())});
    }
};

QTEST_MAIN(TestStyleSheet)
#include "test_stylesheet.moc"
