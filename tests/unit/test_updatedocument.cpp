// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/updatecheck.h"
#include "tests/support/testrun.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

/// What is read from the document that announces releases.
class TestUpdateDocument : public QObject
{
    Q_OBJECT

private slots:
    void versionsAreComparedAsTexts_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("newer");
        QTest::newRow("the running one") << "1.0.0" << false;
        QTest::newRow("next patch") << "1.0.1" << true;
        QTest::newRow("next minor") << "1.1" << true;
        QTest::newRow("ten sorts after one and a full stop") << "10.0.0" << true;
        QTest::newRow("older") << "0.9.9" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("shorter") << "1.0" << false;
        QTest::newRow("longer") << "1.0.0.0" << true;
        QTest::newRow("a letter sorts after digits") << "v1.0.0" << true;
        QTest::newRow("a blank sorts before digits") << " 9.0.0" << false;
        QTest::newRow("beyond the basic plane, by its surrogates") << QStringLiteral("\U0001F600") << true;
    }

    void versionsAreComparedAsTexts()
    {
        QFETCH(const QString, version);
        QFETCH(const bool, newer);
        QCOMPARE(updatecheck::isNewer(version), newer);
    }

    void onlyAnObjectIsADocument_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no JSON") << QByteArray("<html>Sign in to the network</html>");
        QTest::newRow("cut off") << QByteArray("{\"win\": {\"version\": \"1.");
        QTest::newRow("an array") << QByteArray(R"([{"win": {"version": "2.0"}}])");
        QTest::newRow("a string") << QByteArray(R"("2.0")");
        QTest::newRow("nothing") << QByteArray("null");
        QTest::newRow("zeros") << QByteArray(64, '\0');
        QTest::newRow("nested too deeply") << QByteArray(20'000, '[');
    }

    void onlyAnObjectIsADocument()
    {
        QFETCH(const QByteArray, body);
        QVERIFY(!updatecheck::parsed(body).has_value());
    }

    void releaseIsReadFromTheMemberWin()
    {
        const QJsonObject entry{{"version", "1.2"},
                                {"size", "40MB"},
                                {"date", "2025.04.13"},
                                {"url", "https://a.example/b"},
                                {"change", QJsonArray{"One", "Two"}},
                                {"more", true}};
        const auto release = updatecheck::release({{"mac", QJsonObject{{"version", "9"}}}, {"win", entry}});
        QVERIFY(release.has_value());
        QCOMPARE(release->version, QStringLiteral("1.2"));
        QCOMPARE(release->size, QStringLiteral("40MB"));
        QCOMPARE(release->date, QStringLiteral("2025.04.13"));
        QCOMPARE(release->url, QStringLiteral("https://a.example/b"));
        QCOMPARE(release->changes, QStringLiteral("One\nTwo\n"));
    }

    void documentWithoutTheMemberWinHasNoRelease()
    {
        QVERIFY(!updatecheck::release(object(R"({"mac": {"version": "9"}})")).has_value());
        QVERIFY(!updatecheck::release(object(R"({"Win": {"version": "9"}})")).has_value());
    }

    void whatIsMissingOrOfAnotherTypeIsEmpty_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("missing") << QByteArray(R"({"win": {}})");
        QTest::newRow("other types") << QByteArray(
            R"({"win": {"version": 2, "size": true, "date": null, "url": ["a"], "change": "text"}})");
        QTest::newRow("no object") << QByteArray(R"({"win": "2.0"})");
    }

    void whatIsMissingOrOfAnotherTypeIsEmpty()
    {
        QFETCH(const QByteArray, body);
        const auto release = updatecheck::release(object(body));
        QVERIFY(release.has_value());
        for (const QString& text : {release->version, release->size, release->date, release->url, release->changes})
            QCOMPARE(text, QString());
        QVERIFY(!updatecheck::isNewer(release->version));
    }

    void changeThatIsANumberIsAnEmptyLine()
    {
        const auto release = updatecheck::release(object(R"({"win": {"change": ["One", 2, "Three"]}})"));
        QCOMPARE(release->changes, QStringLiteral("One\n\nThree\n"));
    }

    void noChangesAreNoText()
    {
        QCOMPARE(updatecheck::release(object(R"({"win": {"change": []}})"))->changes, QString());
    }

private:
    static QJsonObject object(const QByteArray& body) { return updatecheck::parsed(body).value(); }
};

REGISTER_TEST(testrun::core<TestUpdateDocument>);

#include "test_updatedocument.moc"
