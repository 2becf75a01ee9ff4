// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/addresses.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "widgets/desktopservices.h"

#include <QApplication>
#include <QTest>

/// Which addresses are handed to the web browser.
class TestWebPage : public QObject
{
    Q_OBJECT

private slots:
    void pageOfTheWebIsOpenedOnce_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("https") << "https://www.kestrano.example/new?from=1.0.0#top";
        QTest::newRow("http") << "http://www.kestrano.example/";
        QTest::newRow("capital letters") << "HTTPS://www.kestrano.example/";
    }

    void pageOfTheWebIsOpenedOnce()
    {
        QFETCH(const QString, address);
        const OpenedAddresses browser({"http", "https"});
        QVERIFY(openWebPage(address));
        QCOMPARE(browser.opened(), QList<QUrl>{QUrl(address)});
    }

    void whatIsNoPageOfTheWebIsNotOpened_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("file") << "file:///etc/passwd";
        QTest::newRow("another machine's file") << "file://host/share/setup.exe";
        QTest::newRow("path") << "/usr/bin/xterm";
        QTest::newRow("Windows path") << "C:\\Windows\\System32\\calc.exe";
        QTest::newRow("script") << "javascript:alert(1)";
        QTest::newRow("mail") << "mailto:someone@kestrano.example";
        QTest::newRow("a program's own scheme") << "ms-settings:privacy";
        QTest::newRow("ftp") << "ftp://www.kestrano.example/";
        QTest::newRow("no scheme") << "www.kestrano.example";
        QTest::newRow("no host") << "https:///page";
        QTest::newRow("empty") << "";
        QTest::newRow("an option") << "--help";
    }

    void whatIsNoPageOfTheWebIsNotOpened()
    {
        QFETCH(const QString, address);
        const OpenedAddresses opener({"http", "https", "file", "ftp", "mailto", "javascript", "c", "ms-settings", ""});
        QVERIFY(!openWebPage(address));
        QCOMPARE(opener.opened(), QList<QUrl>());
    }

    void longAddressIsCutInTheLog()
    {
        const MessageCapture messages;
        QVERIFY(!openWebPage(QString(100'000, u'x')));
        QVERIFY(messages.texts().join(u'\n').size() < 1000);
    }
};

REGISTER_TEST(testrun::gui<TestWebPage>);

#include "test_webpage.moc"
