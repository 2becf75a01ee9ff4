// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settingsfile.h"
#include "tests/support/testrun.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QTest>

namespace {

using Values = QSettings::SettingsMap;

QByteArray written(const Values& values)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return settingsfile::write(buffer, values) ? buffer.data() : QByteArray("not written");
}

bool parse(const QByteArray& text, Values& values)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return settingsfile::read(buffer, values);
}

Values parsed(const QByteArray& text)
{
    Values values;
    return parse(text, values) ? values : Values{{"not read", true}};
}

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    void groupsAreWrittenAsTheyAre()
    {
        const Values values{{"general/firstRun", false}, {"general/language", "en_US"}, {"mouse/switch", true}};
        QCOMPARE(written(values),
                 QByteArray("[general]\nfirstRun=false\nlanguage=\"en_US\"\n\n[mouse]\nswitch=true\n"));
    }

    void keysWithoutAGroupHaveAnEmptyOne()
    {
        const Values values{{"alpha/one", "1"}, {"loose", "2"}, {"zeta/two", "3"}};
        QCOMPARE(written(values), QByteArray("[alpha]\none=\"1\"\n\n[]\nloose=\"2\"\n\n[zeta]\ntwo=\"3\"\n"));
        QCOMPARE(parsed(written(values)), values);
    }

    void valuesRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("empty") << "";
        QTest::newRow("quotes") << "say \"hello\"";
        QTest::newRow("line breaks") << "one\ntwo\r\nthree\rfour";
        QTest::newRow("semicolon and hash") << "; a;b #c";
        QTest::newRow("backslashes") << "C:\\new\\u0041\\\\server\\";
        QTest::newRow("brackets and equals") << "[x]=y";
        QTest::newRow("blanks at the ends") << "  padded\t ";
        QTest::newRow("reads like a boolean") << "true";
        QTest::newRow("percent") << "%20 %1 100%";
        QTest::newRow("scripts") << QString(u8"Français 简体中文 日本語 עברית");
        QTest::newRow("beyond the basic plane") << QString(u8"🎥 𝄞");
        QTest::newRow("controls") << QString("a\u0001b\u001fc\u007f") + QChar(0) + "d";
        QTest::newRow("byte order mark") << QString("x") + QChar(0xfeff) + "y";
        QTest::newRow("line separators") << QString(QChar(0x2028)) + "x" + QChar(0x2029) + QChar(0x85);
        QTest::newRow("noncharacters") << QString(QChar(0xffff)) + QChar(0xfffe);
        QTest::newRow("long") << QString(100000, QChar(0x4e2d));
    }

    void valuesRoundTrip()
    {
        QFETCH(const QString, value);
        const Values values{{"group/key", value}, {"group/next", "unharmed"}};
        QCOMPARE(parsed(written(values)), values);
    }

    void anyStringRoundTrips()
    {
        QRandomGenerator random(20240501);
        for (int round = 0; round < 500; ++round) {
            QString value;
            for (int length = random.bounded(40); length > 0; --length)
                value += QChar(static_cast<ushort>(random.bounded(round % 2 == 0 ? 0x80 : 0xd800)));
            const Values values{{"a/b", value}, {"a/c", "unharmed"}};
            QCOMPARE(parsed(written(values)), values);
        }
    }

    void earlierVersionsFilesAreReadTheSame()
    {
        // With every escape that their writer knew.
        const Values values =
            parsed("loose=\"2\"\n[general]\nfirstRun=false\nlanguage=\"oc_FR\"\n\n[recording]\nformat=\"MP4\"\n"
                   "saveLocation=\"/home/J\xc3\xbcrgen \\\"x\\\"/a\\\\b;#[c]=\\u007f\\ufeff\\ttab\\r\\n%20\\ud83cb\"\n"
                   "screenSwitch=true\n\n[screenshot]\nsaveLocation=\"\"\n");
        const Values expected{{"loose", "2"},
                              {"general/firstRun", false},
                              {"general/language", "oc_FR"},
                              {"recording/format", "MP4"},
                              {"recording/saveLocation", QString(u8"/home/Jürgen \"x\"/a\\b;#[c]=") + QChar(0x7f) +
                                                             QChar(0xfeff) + "\ttab\r\n%20" + QChar(0xd83c) + "b"},
                              {"recording/screenSwitch", true},
                              {"screenshot/saveLocation", ""}};
        QCOMPARE(values, expected);
    }

    void booleansAreBooleans()
    {
        const Values values = parsed("[a]\nyes=true\nno=false\nquoted=\"false\"\n");
        QCOMPARE(values.value("a/yes"), QVariant(true));
        QCOMPARE(values.value("a/no"), QVariant(false));
        QCOMPARE(values.value("a/quoted"), QVariant(QString("false")));
        QCOMPARE(values.value("a/quoted").toBool(), false);
    }

    void whatIsTypedByHandIsUnderstood()
    {
        const Values values =
            parsed("\xef\xbb\xbf; my settings\r\n# more\r\n[ ]\r\n\r\n[general]\r\n language = de_DE \r\n"
                   "[recording]\nsaveLocation = /home/me/Videos; new\nformat=\"AVI\" trailing\n"
                   "[recording]\nformat=GIF\nfolder=\"C:\\x\" ; new\n");
        QCOMPARE(values.value("general/language").toString(), QString("de_DE"));
        QCOMPARE(values.value("recording/saveLocation").toString(), QString("/home/me/Videos; new"));
        QCOMPARE(values.value("recording/format").toString(), QString("GIF"));
        QCOMPARE(values.value("recording/folder").toString(), QString("C:x"));
        QCOMPARE(values.size(), 4);
    }

    void brokenLinesArePassedOver()
    {
        const Values values =
            parsed("no value\n=no key\n[unclosed\na=1\n[ok]\nb=\"unclosed\nc=\"\\\nd=\\u00\ne=\"\\uZZZZ\"\n"
                   "f=fine\n\xff\xfe bytes=x\n");
        QCOMPARE(values.value("unclosed/a").toString(), QString("1"));
        QCOMPARE(values.value("ok/b").toString(), QString("unclosed"));
        QCOMPARE(values.value("ok/f").toString(), QString("fine"));
        QCOMPARE(values.value("ok/e").toString(), QString("\\uZZZZ"));
    }

    void anEmptyFileIsAnEmptyStore() { QVERIFY(parsed("").isEmpty()); }

    void aBinaryFileIsNoSettingsFile()
    {
        Values values;
        QVERIFY(!parse(QByteArray("[general]\nlanguage=de_DE\n\0\x01\x02", 26), values));
        QVERIFY(values.isEmpty());
    }

    void aHugeFileIsNoSettingsFile()
    {
        Values values;
        QVERIFY(!parse("[a]\nb=" + QByteArray(settingsfile::kMaximumSize, 'x'), values));
        QVERIFY(values.isEmpty());
        QVERIFY(parse("[a]\nb=" + QByteArray(settingsfile::kMaximumSize - 6, 'x'), values));
        QCOMPARE(values.size(), 1);
    }

    void noInputIsFatal()
    {
        QRandomGenerator random(7);
        const QByteArray alphabet("[]=\\\"u0a\n\r;/ \xc3\xff");
        for (int round = 0; round < 2000; ++round) {
            QByteArray text;
            for (int length = random.bounded(60); length > 0; --length)
                text += alphabet.at(random.bounded(static_cast<int>(alphabet.size())));
            Values values;
            QVERIFY(parse(text, values));
            QVERIFY(values.size() <= text.count('='));
        }
    }

    void aDeviceThatTakesNothingIsReported()
    {
        QBuffer closed;
        closed.open(QIODevice::ReadOnly);
        QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): ReadOnly device");
        QVERIFY(!settingsfile::write(closed, {{"a/b", true}}));
    }
};

REGISTER_TEST(testrun::core<TestSettingsFile>);
#include "test_settingsfile.moc"
