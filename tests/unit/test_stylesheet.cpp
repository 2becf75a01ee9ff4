// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"
#include "widgets/stylesheet.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

namespace {

/// What lies within the frame of a button that has the keyboard, in a window that wears the style sheet.
QImage insideOfFocusedButton(QWidget& window, QWidget& parent, const QString& sheet)
{
    constexpr int kFramePx = 3;
    QPushButton button(&parent);
    button.resize(120, 34);
    applyStyleSheet(window, sheet);
    button.ensurePolished();
    QStyleOptionButton option;
    option.initFrom(&button);
    option.state |= QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange | QStyle::State_On;
    QImage image(button.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    button.style()->drawControl(QStyle::CE_PushButton, &option, &painter, &button);
    painter.end();
    return image.copy(image.rect().adjusted(kFramePx, kFramePx, -kFramePx, -kFramePx));
}

QStringList warningsIn(const QString& log)
{
    QFile file(log);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n').filter(QStringLiteral(" - Warning: "));
}

bool isOfOneColour(const QImage& image)
{
    QImage plain(image.size(), image.format());
    plain.fill(image.pixelColor(0, 0));
    return image == plain;
}

} // namespace

class TestStyleSheet : public QObject
{
    Q_OBJECT

private slots:
    void missingStyleSheetIsLoggedTwiceAndKeepsTheLook()
    {
        const QTemporaryDir folder;
        const QString log = folder.filePath(QStringLiteral("look.log"));
        QVERIFY(SCLogger::instance()->initialize(log));
        QWidget widget;
        const QString look = QStringLiteral("background-color: #28282E");
        widget.setStyleSheet(look);
        QVERIFY(!applyStyleSheet(widget, QStringLiteral(":/res/style/none.qss")));
        const QStringList warnings = warningsIn(log);
        QCOMPARE(warnings.size(), 2);
        QVERIFY2(warnings.at(0).endsWith(QLatin1String("Failed to load stylesheet from: :/res/style/none.qss")),
                 qPrintable(warnings.at(0)));
        static const QRegularExpression kReason(QStringLiteral("Warning: Error: ."));
        QVERIFY2(warnings.at(1).contains(kReason), qPrintable(warnings.at(1)));
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
        QCOMPARE(messages.texts(), QStringList{QStringLiteral("Loaded stylesheet from: %1").arg(file.fileName())});
    }

    /// The style of Windows draws a dotted rectangle around the text of a button that has the keyboard.
    void buttonWithTheKeyboardHasNoSecondFrame_data()
    {
        QTest::addColumn<QString>("part");
        QTest::newRow("main-window") << "sideBar";
        QTest::newRow("settings-window") << "sideBar";
        QTest::newRow("upgrade-window") << "stackedWidget";
        QTest::newRow("message-box") << QString();
    }

    void buttonWithTheKeyboardHasNoSecondFrame()
    {
        QFETCH(const QString, part);
        const QString sheet = QStringLiteral(":/res/style/%1.qss").arg(QLatin1String(QTest::currentDataTag()));
        QApplication::setStyle(QStringLiteral("Windows"));
        QWidget window;
        QWidget central(&window);
        central.setObjectName(QStringLiteral("centralArea"));
        QWidget parent(&central);
        parent.setObjectName(part);
        QMessageBox box;
        QVERIFY(isOfOneColour(part.isEmpty() ? insideOfFocusedButton(box, box, sheet)
                                             : insideOfFocusedButton(window, parent, sheet)));
    }
};

REGISTER_TEST(testrun::gui<TestStyleSheet>);
#include "test_stylesheet.moc"
