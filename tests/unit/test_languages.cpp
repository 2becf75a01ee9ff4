// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settingstables.h"
#include "tests/support/testrun.h"
#include "tests/support/translationfile.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QSettings>
#include <QTest>

namespace {

/// The texts that a translation file has at the least.
QStringList requiredKeys()
{
    return {"Recording",
            "Screenshot",
            "Files",
            "Full Screen",
            "Select Region",
            "Select Window",
            "Ratio",
            "Custom",
            "Width",
            "Height",
            "File Name",
            "Enter custom filename (optional)",
            "Format",
            "File Location",
            "Change",
            "Start Recording",
            "Stop Recording",
            "Settings",
            "Language",
            "Check for Updates",
            "Help",
            "Guide",
            "FAQ",
            "Open Log Folder",
            "About",
            "Delete Selected Files",
            "Reverse File Order",
            "Open Folder",
            "General",
            "Hotkeys",
            "Mouse",
            "Start/Stop Recording",
            "Capture Screenshot",
            "Capture Mouse Cursor",
            "Add Mouse Effect",
            "Video",
            "Audio",
            "Save",
            "Cancel",
            "Upgrade",
            "Waiting for checking...",
            "Current version is update to date.",
            "Version:",
            "Release Date:",
            "Size:",
            "Remind Me Later",
            "Upgrade Now",
            "Start/Stop",
            "To learn more about us, please visit:",
            "Start Drawing",
            "Clear Drawing",
            "Close Window",
            "Capture",
            "Tolvaran Kestrano screen recorder is a great tool for recording screen and taking screenshot."};
}

QStringList languages()
{
    QStringList codes;
    for (const auto& [position, code] : settingstables::kLanguageCodes)
        codes.append(code);
    return codes;
}

/// What is the same word in that language as in English.
QStringList sameAsInEnglish(const QString& code)
{
    static const QMap<QString, QStringList> words{
        {"de_DE", {"Screenshot", "Format", "Video", "Audio", "Version:", "OK", "Webcam", "Name", "Computer"}},
        {"oc_FR", {"Format", "Audio", "OK", "Menu", "Microphone", "Webcam", "Type"}},
        {"es_ES", {"General", "Audio", "Error"}},
        {"pt_PT", {"OK", "Menu"}},
        {"it_IT", {"Mouse", "Video", "Audio", "OK", "Menu", "Webcam", "Computer"}},
        {"ja_JP", {"OK"}}};
    return words.value(code) + QStringList("Kestrano");
}

QSet<QString> setOf(const QStringList& list)
{
    return {list.begin(), list.end()};
}

/// Every placeholder as often as it stands in the text.
QStringList placeholders(const QString& text)
{
    static const QRegularExpression form("%\\d");
    QStringList found;
    for (auto matches = form.globalMatch(text); matches.hasNext();)
        found.append(matches.next().captured());
    found.sort();
    return found;
}

} // namespace

/// The files of the nine languages, as they are compiled in.
class TestLanguages : public QObject
{
    Q_OBJECT

private slots:
    void thereAreNineLanguages() { QCOMPARE(languages().size(), 9); }

    void fileIsTextWithoutAMarkOrSections_data() { eachLanguage(); }

    void fileIsTextWithoutAMarkOrSections()
    {
        QFETCH(const QString, code);
        const QByteArray bytes = translationfile::bytes(code);
        QVERIFY(!bytes.startsWith("\xef\xbb\xbf"));
        QCOMPARE(QString::fromUtf8(bytes).toUtf8(), bytes);
        QVERIFY(!QString::fromUtf8(bytes).contains(QChar::ReplacementCharacter));
        QVERIFY(!bytes.startsWith('[') && !bytes.contains("\n["));
    }

    void everyLineEndsWithCarriageReturnAndLineFeed_data() { eachLanguage(); }

    void everyLineEndsWithCarriageReturnAndLineFeed()
    {
        QFETCH(const QString, code);
        const QByteArray bytes = translationfile::bytes(code);
        QVERIFY(bytes.endsWith("\r\n"));
        QCOMPARE(bytes.count("\r\n"), bytes.count('\n'));
        QCOMPARE(bytes.count('\r'), bytes.count('\n'));
    }

    void everyLineIsAKeyAndAQuotedValue_data() { eachLanguage(); }

    void everyLineIsAKeyAndAQuotedValue()
    {
        QFETCH(const QString, code);
        const QList<translationfile::Entry> entries = translationfile::entries(code);
        QVERIFY(!entries.isEmpty());
        for (qsizetype line = 0; line < entries.size(); ++line)
            QVERIFY2(!entries.at(line).key.isEmpty(), qPrintable(QString("line %1").arg(line + 1)));
    }

    void keysAreThoseOfTheEnglishFileInItsOrder_data() { eachLanguage(); }

    void keysAreThoseOfTheEnglishFileInItsOrder()
    {
        QFETCH(const QString, code);
        const QStringList english = translationfile::keys("en_US");
        const QStringList keys = translationfile::keys(code);
        QCOMPARE(QStringList((setOf(english) - setOf(keys)).values()), QStringList());
        QCOMPARE(QStringList((setOf(keys) - setOf(english)).values()), QStringList());
        QCOMPARE(keys, english);
    }

    void noKeyIsGivenTwice_data() { eachLanguage(); }

    void noKeyIsGivenTwice()
    {
        QFETCH(const QString, code);
        const QStringList keys = translationfile::keys(code);
        QCOMPARE(setOf(keys).size(), keys.size());
    }

    void everyRequiredTextIsThere_data() { eachLanguage(); }

    void everyRequiredTextIsThere()
    {
        QFETCH(const QString, code);
        QCOMPARE(QStringList((setOf(requiredKeys()) - setOf(translationfile::keys(code))).values()), QStringList());
    }

    /// A key that the reader mangled would still come back as itself when the translator is asked for it.
    void readerFindsEveryKeyAsItIsMeant_data() { eachLanguage(); }

    void readerFindsEveryKeyAsItIsMeant()
    {
        QFETCH(const QString, code);
        const QSettings reader(QString(":/locales/%1.ini").arg(code), QSettings::IniFormat);
        QCOMPARE(setOf(reader.allKeys()), setOf(translationfile::keys(code)));
        for (const auto& [key, value] : translationfile::entries(code))
            QCOMPARE(reader.value(key).toString(), value);
    }

    void placeholdersAndLineBreaksAreKept_data() { eachLanguage(); }

    void placeholdersAndLineBreaksAreKept()
    {
        QFETCH(const QString, code);
        for (const auto& [key, value] : translationfile::entries(code)) {
            QCOMPARE(placeholders(value), placeholders(key));
            QVERIFY2(value.count('\n') == key.count('\n'), qPrintable(key));
        }
    }

    void englishFileMapsEveryKeyToItself()
    {
        for (const auto& [key, value] : translationfile::entries("en_US"))
            QCOMPARE(value, key);
    }

    void everyTextIsTranslated_data() { eachLanguage("en_US"); }

    void everyTextIsTranslated()
    {
        QFETCH(const QString, code);
        QStringList same;
        for (const auto& [key, value] : translationfile::entries(code)) {
            QVERIFY2(!value.trimmed().isEmpty(), qPrintable(key));
            if (value == key)
                same.append(key);
        }
        QCOMPARE(setOf(same), setOf(sameAsInEnglish(code)));
    }

    /// A text of another language in the wrong file would be in no other check.
    void textsAreWrittenInTheLanguagesLetters_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QChar::Script>("script");
        QTest::newRow("zh_CN") << "zh_CN" << QChar::Script_Han;
        QTest::newRow("zh_TW") << "zh_TW" << QChar::Script_Han;
        QTest::newRow("ja_JP") << "ja_JP" << QChar::Script_Katakana;
        QTest::newRow("de_DE") << "de_DE" << QChar::Script_Latin;
        QTest::newRow("it_IT") << "it_IT" << QChar::Script_Latin;
    }

    void textsAreWrittenInTheLanguagesLetters()
    {
        QFETCH(const QString, code);
        QFETCH(const QChar::Script, script);
        QSet<QChar::Script> scripts;
        for (const auto& entry : translationfile::entries(code)) {
            for (const QChar letter : entry.value)
                scripts.insert(letter.script());
        }
        QVERIFY(scripts.contains(script));
        QCOMPARE(scripts.contains(QChar::Script_Han), code.startsWith("zh") || code.startsWith("ja"));
        QCOMPARE(scripts.contains(QChar::Script_Hiragana), code.startsWith("ja"));
    }

private:
    static void eachLanguage(const QString& without = {})
    {
        QTest::addColumn<QString>("code");
        for (const QString& code : languages()) {
            if (code != without)
                QTest::newRow(qPrintable(code)) << code;
        }
    }
};

REGISTER_TEST(testrun::core<TestLanguages>);
#include "test_languages.moc"
