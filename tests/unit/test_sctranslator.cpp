// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"
#include "app/settingstables.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testrun.h"
#include "tests/support/translationfile.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTest>

namespace {

/// Counts the language changes that the application is notified of.
class LanguageChanges : public QObject
{
public:
    int count = 0;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange)
            ++count;
        return QObject::eventFilter(watched, event);
    }
};

QString translated(const SCTranslator& translator, const QString& text)
{
    return translator.translate("AnyContext", text.toUtf8().constData());
}

} // namespace

class TestSCTranslator : public QObject
{
    Q_OBJECT

private slots:
    void beforeLoadingEveryTextIsItself()
    {
        const SCTranslator translator;
        QVERIFY(translator.isEmpty());
        QCOMPARE(translated(translator, "Start Recording"), QString("Start Recording"));
    }

    void aTextInTheFileIsTranslatedInAnyContext()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QCOMPARE(translator.translate("One", "Plain"), QString("Einfach"));
        QCOMPARE(translator.translate("Another", "Plain", "disambiguation", 3), QString("Einfach"));
        QCOMPARE(translator.translate(nullptr, "Plain"), QString("Einfach"));
    }

    void aTextNotInTheFileStaysUnchanged()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QCOMPARE(translated(translator, "Not in the file"), QString("Not in the file"));
        QCOMPARE(translated(translator, QStringLiteral("Größe")), QStringLiteral("Größe"));
    }

    void everyLanguageIsLoaded_data()
    {
        QTest::addColumn<QString>("code");
        for (const auto& [position, code] : settingstables::kLanguageCodes)
            QTest::newRow(qPrintable(code)) << code;
    }

    void everyLanguageIsLoaded()
    {
        QFETCH(const QString, code);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(code));
        const QList<translationfile::Entry> entries = translationfile::entries(code);
        QVERIFY(entries.size() > 50);
        for (const auto& [key, value] : entries)
            QCOMPARE(translated(translator, key), value);
    }

    void numbersAndDatesFollowTheLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QLocale>("expected");
        QTest::newRow("German") << "de_DE" << QLocale(QLocale::German, QLocale::Germany);
        QTest::newRow("French") << "oc_FR" << QLocale(QLocale::French, QLocale::France);
        QTest::newRow("simplified Chinese") << "zh_CN" << QLocale(QLocale::Chinese, QLocale::China);
        QTest::newRow("traditional Chinese") << "zh_TW" << QLocale(QLocale::Chinese, QLocale::Taiwan);
    }

    void numbersAndDatesFollowTheLanguage()
    {
        QFETCH(const QString, code);
        QFETCH(const QLocale, expected);
        const QLocale before;
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(code));
        const QLocale shown;
        QVERIFY(!translator.loadLanguage(QStringLiteral("xx_XX")));
        QCOMPARE(QLocale(), shown);
        QLocale::setDefault(before);
        QCOMPARE(shown.language(), expected.language());
        QCOMPARE(shown.script(), expected.script());
        QCOMPARE(shown.decimalPoint(), expected.decimalPoint());
    }

    void germanTextIsFoundInAnyContext()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("de_DE"));
        for (const char* context : {"SCMainWindow", "DrawWindow", ""})
            QCOMPARE(translator.translate(context, "Start Recording"), QString("Aufnahme starten"));
        QCOMPARE(translated(translator, "Not in the file"), QString("Not in the file"));
    }

    void anUnknownCodeKeepsTheLoadedLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("a language without a file") << "fr_FR";
        QTest::newRow("empty") << "";
        QTest::newRow("a path") << "../locales/tt";
    }

    void anUnknownCodeKeepsTheLoadedLanguage()
    {
        QFETCH(const QString, code);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        MessageCapture capture;
        QVERIFY(!translator.loadLanguage(code));
        const QString expected = QString("Translation file not found: :/locales/%1.ini").arg(code);
        QCOMPARE(capture.texts(QtDebugMsg), QStringList(expected));
        QCOMPARE(translated(translator, "Plain"), QString("Einfach"));
    }

    void aFaultyFileKeepsTheLoadedLanguage()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        MessageCapture capture;
        QVERIFY(!translator.loadLanguage("tt_BROKEN"));
        QCOMPARE(capture.texts(QtDebugMsg), QStringList("Error reading translation file: :/locales/tt_BROKEN.ini"));
        QCOMPARE(translated(translator, "Plain"), QString("Einfach"));
        QCOMPARE(translated(translator, "Good"), QString("Good"));
    }

    void aByteOrderMarkBelongsToNoKey()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_MARKED"));
        QCOMPARE(translated(translator, "First"), QStringLiteral("Größe"));
        QCOMPARE(translated(translator, "Second"), QString("zwei"));
    }

    void aKeyGivenAThousandTimesKeepsOneValue()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_REPEATED"));
        bool isNumber = false;
        const int number = translated(translator, "Repeated").toInt(&isNumber);
        QVERIFY(isNumber && number >= 1 && number <= 1000);
        QCOMPARE(translated(translator, "Start/Stop"), QString("einmal"));
    }

    void aFileThatIsNoneOfThemKeepsTheLoadedLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("a document") << "tt_JSON";
        QTest::newRow("a image") << "tt_BINARY";
        QTest::newRow("prose") << "tt_PROSE";
    }

    void aFileThatIsNoneOfThemKeepsTheLoadedLanguage()
    {
        QFETCH(const QString, code);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("de_DE"));
        const MessageCapture capture;
        QVERIFY(!translator.loadLanguage(code));
        QCOMPARE(capture.texts(QtDebugMsg),
                 QStringList(QString("Error reading translation file: :/locales/%1.ini").arg(code)));
        QCOMPARE(translated(translator, "Save"), QString("Speichern"));
    }

    void anEmptyFileLeavesEveryTextInEnglish()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("de_DE"));
        QVERIFY(translator.loadLanguage("tt_EMPTY"));
        QVERIFY(translator.isEmpty());
        QCOMPARE(translated(translator, "Save"), QString("Save"));
    }

    void aKeyWithASlashIsFoundAsItIs()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QCOMPARE(translated(translator, "Start/Stop Recording"), QString("Aufnahme starten/stoppen"));
    }

    void aPercentSignInAKeyIsWrittenAs25()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QCOMPARE(translated(translator, "Do you want to delete %1 files?"), QStringLiteral("%1 Dateien löschen?"));
        QCOMPARE(translated(translator, "100%"), QString("hundert"));
    }

    void aKeyGivenTwiceKeepsOneValue()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        const QString text = translated(translator, "Repeated");
        QVERIFY(text == "erst" || text == "dann");
    }

    void loadingTheSameCodeTwiceGivesTheSameTable()
    {
        SCTranslator once;
        SCTranslator twice;
        QVERIFY(once.loadLanguage("tt_TT"));
        QVERIFY(twice.loadLanguage("tt_TT"));
        QVERIFY(twice.loadLanguage("tt_TT"));
        QCOMPARE(translated(twice, "Plain"), QString("Einfach"));
        for (const QString& key : translationfile::keys("tt_TT"))
            QCOMPARE(translated(twice, key), translated(once, key));
    }

    void loadingReplacesTheWholeTable()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QVERIFY(translator.loadLanguage("en_US"));
        QCOMPARE(translated(translator, "Plain"), QString("Plain"));
    }

    void installingAgainAnnouncesTheLanguageChange()
    {
        LanguageChanges changes;
        QCoreApplication::instance()->installEventFilter(&changes);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCOMPARE(changes.count, 1);
        QCOMPARE(QCoreApplication::translate("Any", "Plain"), QString("Einfach"));
        QVERIFY(QCoreApplication::removeTranslator(&translator));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QVERIFY(changes.count >= 2);
    }
};

REGISTER_TEST(testrun::core<TestSCTranslator>);
#include "test_sctranslator.moc"
