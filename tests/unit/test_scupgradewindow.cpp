// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/webaddresses.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scupgradewindow.h"
#include "tests/support/addresses.h"
#include "tests/support/messagecapture.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSet>
#include <QStackedWidget>
#include <QTest>
#include <QTextEdit>
#include <QTranslator>

namespace {

QJsonObject document(const QByteArray& body)
{
    return QJsonDocument::fromJson(body).object();
}

QJsonObject newer()
{
    return {{"win", QJsonObject{{"version", "1.0.1"},
                                {"size", "40MB"},
                                {"date", "2025.04.13"},
                                {"url", "https://www.kestrano.example/new"},
                                {"change", QJsonArray{"First", "Second"}}}}};
}

/// Puts every text between brackets.
class Brackets : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                      int /*count*/) const override
    {
        return QStringLiteral("<%1>").arg(QString::fromUtf8(text));
    }
};

} // namespace

/// What the update window shows of a document that it is given, and what its buttons do.
class TestSCUpgradeWindow : public QObject
{
    Q_OBJECT

private slots:
    void newerVersionIsShownWithItsDetails()
    {
        const SCUpgradeWindow window(nullptr, newer());
        QCOMPARE(page(window), 2);
        QCOMPARE(text(window, "newVersionLabel"), QStringLiteral("1.0.1"));
        QCOMPARE(text(window, "releaseDateLabel"), QStringLiteral("2025.04.13"));
        QCOMPARE(text(window, "sizeLabel"), QStringLiteral("40MB"));
        QCOMPARE(child<QTextEdit>(window, "upgradeInfoTextEdit")->toPlainText(), QStringLiteral("First\nSecond\n"));
    }

    void runningVersionInTheDocumentShowsThePageUpToDate()
    {
        const SCUpgradeWindow window(nullptr, document(R"({"win": {"version": "1.0.0"}})"));
        QCOMPARE(page(window), 1);
        QCOMPARE(text(window, "upToDateLabel"), QStringLiteral("Current version is update to date."));
        QCOMPARE(text(window, "currentVersionLabel"), QStringLiteral("1.0.0"));
    }

    void olderVersionInTheDocumentShowsThePageUpToDate()
    {
        QCOMPARE(page(SCUpgradeWindow(nullptr, document(R"({"win": {"version": "0.9"}})"))), 1);
    }

    void emptyChangeListShowsTheNewVersionWithAnEmptyTextBox()
    {
        const SCUpgradeWindow window(nullptr, document(R"({"win": {"version": "2", "change": []}})"));
        QCOMPARE(page(window), 2);
        QCOMPARE(child<QTextEdit>(window, "upgradeInfoTextEdit")->toPlainText(), QString());
    }

    void changeThatIsANumberShowsAsAnEmptyLine()
    {
        const SCUpgradeWindow window(nullptr, document(R"({"win": {"version": "2", "change": ["One", 2, "Three"]}})"));
        QCOMPARE(child<QTextEdit>(window, "upgradeInfoTextEdit")->toPlainText(), QStringLiteral("One\n\nThree\n"));
    }

    void documentWithoutWindowsKeepsThePageThatWaits()
    {
        const MessageCapture messages;
        const SCUpgradeWindow window(nullptr, document(R"({"mac": {"version": "2"}})"));
        QCOMPARE(page(window), 0);
        QCOMPARE(text(window, "checkingLabel"), QStringLiteral("Waiting for checking..."));
        QVERIFY(messages.texts(QtDebugMsg).contains(QStringLiteral("[DEBUG] No Windows upgrade info found")));
    }

    void markupFromTheServerIsShownAsItIsWritten()
    {
        const QJsonObject marked{{"version", "<h1>2</h1>"},
                                 {"size", "<img src=x>"},
                                 {"date", "<b>now</b>"},
                                 {"change", QJsonArray{"<b>bold</b>"}}};
        SCUpgradeWindow window(nullptr, {{"win", marked}});
        window.show();
        for (const char* name : {"newVersionLabel", "sizeLabel", "releaseDateLabel"})
            QCOMPARE(child<QLabel>(window, name)->textFormat(), Qt::PlainText);
        QCOMPARE(child<QTextEdit>(window, "upgradeInfoTextEdit")->toPlainText(), QStringLiteral("<b>bold</b>\n"));
    }

    void longTextsDoNotWidenTheWindow()
    {
        const QJsonObject endless{{"win", QJsonObject{{"version", QString(5000, u'2')},
                                                      {"size", QString(5000, u'M')},
                                                      {"change", QJsonArray{QString(5000, u'x')}}}}};
        const SCUpgradeWindow usual(nullptr, newer());
        QCOMPARE(SCUpgradeWindow(nullptr, endless).sizeHint(), usual.sizeHint());
    }

    void textBoxTakesNothingFromTheUser()
    {
        const SCUpgradeWindow window(nullptr, newer());
        const auto* const box = child<QTextEdit>(window, "upgradeInfoTextEdit");
        QCOMPARE(box->textInteractionFlags(), Qt::NoTextInteraction);
        QVERIFY(box->isReadOnly());
        QCOMPARE(box->viewport()->cursor().shape(), Qt::ArrowCursor);
    }

    void upgradeNowOpensTheAddressOnceAndLeavesTheWindowOpen()
    {
        const OpenedAddresses browser({"https"});
        SCUpgradeWindow window(nullptr, newer());
        window.show();
        QTest::mouseClick(child<QPushButton>(window, "upgradeBtn"), Qt::LeftButton);
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl("https://www.kestrano.example/new")});
        QVERIFY(window.isVisible());
    }

    void upgradeNowWithoutAnAddressOpensNothing()
    {
        const OpenedAddresses browser({"https", "http", "file", ""});
        const MessageCapture messages;
        SCUpgradeWindow window(nullptr, document(R"({"win": {"version": "2"}})"));
        window.show();
        QTest::mouseClick(child<QPushButton>(window, "upgradeBtn"), Qt::LeftButton);
        QCOMPARE(browser.opened(), QList<QUrl>());
        QCOMPARE(messages.texts(QtWarningMsg).filter("[WARNING]"), QStringList());
    }

    void addressThatIsNotOfTheWebIsNotOpenedAndLogged()
    {
        const OpenedAddresses browser({"https", "http", "file"});
        const MessageCapture messages;
        SCUpgradeWindow window(nullptr, {{"win", QJsonObject{{"version", "2"}, {"url", "file:///usr/bin/true"}}}});
        window.show();
        QTest::mouseClick(child<QPushButton>(window, "upgradeBtn"), Qt::LeftButton);
        QCOMPARE(browser.opened(), QList<QUrl>());
        QCOMPARE(messages.texts(QtWarningMsg).filter("[WARNING]").filter("file:///usr/bin/true").size(), 1);
    }

    void buttonClosesTheWindow_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::newRow("later") << QByteArray("laterBtn");
        QTest::newRow("close") << QByteArray("closeBtn");
    }

    void buttonClosesTheWindow()
    {
        QFETCH(const QByteArray, button);
        SCUpgradeWindow window(nullptr, newer());
        window.show();
        QTest::mouseClick(child<QPushButton>(window, button), Qt::LeftButton);
        QVERIFY(!window.isVisible());
    }

    void escapeClosesTheWindow()
    {
        SCUpgradeWindow window(nullptr, newer());
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(!window.isVisible());
    }

    void windowShownOverAnotherIsModalCentredAndGoesWhenItIsClosed()
    {
        QWidget below;
        below.setGeometry(100, 100, 560, 420);
        below.show();
        const QPointer<SCUpgradeWindow> window = new SCUpgradeWindow(&below, newer());
        dialogwindow::showOver(*window, below);
        QVERIFY(window->isVisible());
        QCOMPARE(window->windowModality(), Qt::ApplicationModal);
        QVERIFY((window->geometry().center() - below.geometry().center()).manhattanLength() <= 2);
        QCOMPARE(window->minimumSize(), window->maximumSize());
        window->close();
        QTRY_VERIFY(window.isNull());
    }

    void windowThatWaitsToBeShownFollowsTheLanguage()
    {
        const SCUpgradeWindow window(nullptr, newer());
        Brackets translator;
        QCoreApplication::installTranslator(&translator);
        QCoreApplication::processEvents();
        QCOMPARE(child<QPushButton>(window, "laterBtn")->text(), QStringLiteral("<Remind Me Later>"));
        QCoreApplication::removeTranslator(&translator);
        QCoreApplication::processEvents();
        QCOMPARE(child<QPushButton>(window, "laterBtn")->text(), QStringLiteral("Remind Me Later"));
        QCOMPARE(text(window, "newVersionLabel"), QStringLiteral("1.0.1"));
        QCOMPARE(child<QTextEdit>(window, "upgradeInfoTextEdit")->toPlainText(), QStringLiteral("First\nSecond\n"));
        QCOMPARE(page(window), 2);
    }

    void everyPageIsAsLarge()
    {
        QSet<int> heights;
        for (const char* version : {"1.0.0", "2"}) {
            SCUpgradeWindow window(nullptr, {{"win", QJsonObject{{"version", version}}}});
            window.show();
            heights.insert(window.height());
        }
        QCOMPARE(heights.size(), 1);
    }

    void windowOverOneAtTheScreensEdgeStaysOnTheScreen()
    {
        QWidget below;
        below.setGeometry(-300, -200, 560, 420);
        below.show();
        const QPointer<SCUpgradeWindow> window = new SCUpgradeWindow(&below, newer());
        dialogwindow::showOver(*window, below);
        QVERIFY(below.screen()->availableGeometry().contains(window->geometry()));
        delete window;
    }

    void namesAreThoseOfTheStyleSheet()
    {
        const SCUpgradeWindow window(nullptr, newer());
        const auto* const stack = child<QStackedWidget>(window, "stackedWidget");
        QCOMPARE(stack->widget(0)->objectName(), QStringLiteral("checkUpgradePage"));
        QCOMPARE(stack->widget(1)->objectName(), QStringLiteral("updateToDatePage"));
        QCOMPARE(stack->widget(2)->objectName(), QStringLiteral("upgradeInfoPage"));
        QCOMPARE(text(window, "upgradeLabel"), QStringLiteral("Upgrade"));
        QCOMPARE(child<QPushButton>(window, "laterBtn")->text(), QStringLiteral("Remind Me Later"));
        QCOMPARE(child<QPushButton>(window, "upgradeBtn")->text(), QStringLiteral("Upgrade Now"));
        QVERIFY(child<QWidget>(window, "line") != nullptr);
        QVERIFY(!window.styleSheet().isEmpty());
    }

private:
    template <typename Widget>
    static Widget* child(const QWidget& window, const char* name)
    {
        return window.findChild<Widget*>(QLatin1String(name));
    }

    static QString text(const QWidget& window, const char* name) { return child<QLabel>(window, name)->text(); }
    static int page(const QWidget& window) { return child<QStackedWidget>(window, "stackedWidget")->currentIndex(); }
};

REGISTER_TEST(windowtest::run<TestSCUpgradeWindow>);

#include "test_scupgradewindow.moc"
