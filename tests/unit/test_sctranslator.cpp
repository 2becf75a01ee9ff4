#include "app/sctranslator.h"
#include "app/settingstables.h"
#include "tests/support/messagecapture.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTest>

namespace {

/// Counts the language changes that the application is told of.
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

QString fileText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The keys of a translation file, read line by line and not through the reader under test.
QStringList keysInFile(const QString& path)
{
    QStringList keys;
    const QStringList lines = fileText(path).split("\r\n", Qt::SkipEmptyParts);
    for (const QString& line : lines)
        keys.append(line.left(line.indexOf(" = \"")).replace("%0A", "\n").replace("%25", "%"));
    return keys;
}

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
        const QString expected = QString("Translation file not found: \":/locales/%1.ini\"").arg(code);
        QCOMPARE(capture.texts(QtDebugMsg), QStringList(expected));
        QCOMPARE(translated(translator, "Plain"), QString("Einfach"));
    }

    void aFaultyFileKeepsTheLoadedLanguage()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        MessageCapture capture;
        QVERIFY(!translator.loadLanguage("tt_BROKEN"));
        QCOMPARE(capture.texts(QtDebugMsg), QStringList("Error reading translation file: \":/locales/tt_BROKEN.ini\""));
        QCOMPARE(translated(translator, "Plain"), QString("Einfach"));
        QCOMPARE(translated(translator, "Good"), QString("Good"));
    }

    void aKeyWithASlashIsFoundAsItStands()
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
        for (const QString& key : keysInFile(":/locales/tt_TT.ini"))
            QCOMPARE(translated(twice, key), translated(once, key));
    }

    void loadingReplacesTheWholeTable()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("tt_TT"));
        QVERIFY(translator.loadLanguage("en_US"));
        QCOMPARE(translated(translator, "Plain"), QString("Plain"));
    }

    void theEnglishFileMapsEveryKeyToItself()
    {
        const QString path = ":/locales/en_US.ini";
        const QStringList lines = fileText(path).split("\r\n", Qt::SkipEmptyParts);
        for (const QString& line : lines) {
            const QString key = line.left(line.indexOf(" = \""));
            QCOMPARE(line.trimmed(),
                     QString("%1 = \"%2\"").arg(key, QString(key).replace("%0A", "\\n").replace("%25", "%")));
        }
        // A key that the reader mangled would still come back as itself when the translator is asked for it.
        QStringList keysRead = QSettings(path, QSettings::IniFormat).allKeys();
        QStringList keys = keysInFile(path);
        keysRead.sort();
        keys.sort();
        QCOMPARE(keysRead, keys);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage("en_US"));
        for (const QString& key : keys)
            QCOMPARE(translated(translator, key), key);
    }

    void theEnglishFileHasEveryText()
    {
        const QStringList keys = keysInFile(":/locales/en_US.ini");
        for (const QString& key : requiredKeys())
            QVERIFY2(keys.contains(key), qPrintable(key));
        QCOMPARE(QSet<QString>(keys.begin(), keys.end()).size(), keys.size());
    }

    void everyLineEndsWithCarriageReturnAndLineFeed()
    {
        QFile file(":/locales/en_US.ini");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.endsWith("\r\n"));
        QCOMPARE(bytes.count("\r\n"), bytes.count('\n'));
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

QTEST_GUILESS_MAIN(TestSCTranslator)
#include "test_sctranslator.moc"
