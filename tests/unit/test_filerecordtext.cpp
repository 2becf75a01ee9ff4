#include "files/filerecordtext.h"
#include "tests/support/testrun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

namespace {

QByteArray asTheToolkitWrites(const QList<FileRecord>& records)
{
    QJsonArray array;
    for (const FileRecord& record : records)
        array.append(
            QJsonObject{{"filepath", record.filepath}, {"properties", QJsonObject::fromVariantMap(record.properties)}});
    return QJsonDocument(array).toJson(QJsonDocument::Indented);
}

/// Letters, and every kind of character that could be trouble.
QString randomText(QRandomGenerator& random)
{
    static const QList<char16_t> kTroubles{u'"',   u'\\',  u'/',   u'\n',  u'\r',  u'\t',  u'\b',  u'\f',  0,
                                           1,      0x1f,   0x7f,   u'<',   u'%',   u' ',   u'-',   u'\'',  0xe9,
                                           0x2028, 0x9332, 0xd83c, 0xdfac, 0xd800, 0xdc00, 0xfeff, 0xfffe, 0xffff};
    QString text;
    for (quint32 length = random.bounded(12U); length > 0; --length) {
        const bool trouble = random.bounded(3U) == 0;
        text.append(trouble ? QChar(kTroubles.at(random.bounded(kTroubles.size()))) : QChar(u'a' + random.bounded(26)));
    }
    return text;
}

QVariant randomValue(QRandomGenerator& random, int depth)
{
    switch (random.bounded(depth > 2 ? 6 : 8)) {
    case 0:
        return random.generateDouble();
    case 1:
        return random.bounded(2U) == 0;
    case 2:
        return QVariant::fromValue(nullptr);
    case 6:
        return QVariantList{randomValue(random, depth + 1), randomValue(random, depth + 1)};
    case 7:
        return QVariantMap{{randomText(random), randomValue(random, depth + 1)}};
    default:
        return randomText(random);
    }
}

} // namespace

class TestFileRecordText : public QObject
{
    Q_OBJECT

private slots:
    void textIsTheToolkitsByteForByte_data()
    {
        QTest::addColumn<QList<FileRecord>>("records");
        const FileRecord usual{"/videos/a.mp4", {{"type", "video"}, {"dateAdded", "2026-11-21T12:00:00"}}};
        QTest::newRow("none") << QList<FileRecord>{};
        QTest::newRow("one") << QList<FileRecord>{usual};
        QTest::newRow("several") << QList<FileRecord>{usual, usual, usual};
        QTest::newRow("without properties") << QList<FileRecord>{{"/a.mp4", {}}};
        QTest::newRow("nested properties")
            << QList<FileRecord>{{"/a.mp4", {{"tags", QVariantList{"a\nb", 1.5, QVariantMap{{"k", true}}}}}}};
    }

    void textIsTheToolkitsByteForByte()
    {
        QFETCH(const QList<FileRecord>, records);
        QCOMPARE(toJsonText(records), asTheToolkitWrites(records));
    }

    void textOfAnyRecordIsTheToolkitsByteForByte()
    {
        QRandomGenerator random(20261121);
        for (int round = 0; round < 3000; ++round) {
            QList<FileRecord> records;
            for (quint32 number = random.bounded(4U); number > 0; --number) {
                QVariantMap properties;
                for (quint32 keys = random.bounded(4U); keys > 0; --keys)
                    properties.insert(randomText(random), randomValue(random, 0));
                records.append({randomText(random), properties});
            }
            QCOMPARE(toJsonText(records), asTheToolkitWrites(records));
        }
    }

    void usualRecordsAreReadBack()
    {
        QList<FileRecord> records;
        QCOMPARE(fromJsonText(toJsonText(records)).value(), records);
        for (const char* name : {"a", "--b %1", "\u9332\u753b", "it's \U0001F3AC", "&<>/"}) {
            records.append({QString::fromUtf8(name), {{"type", "video"}, {"dateAdded", "2026-11-21T12:00:00"}}});
            QCOMPARE(fromJsonText(toJsonText(records)).value(), records);
        }
        records.append(FileRecord{"without", {}});
        QCOMPARE(fromJsonText(toJsonText(records)).value(), records);
    }

    void otherTextsAreLeftToTheToolkit_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray usual = toJsonText({{"/a.mp4", {{"type", "video"}}}});
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("compact") << QJsonDocument::fromJson(usual).toJson(QJsonDocument::Compact);
        QTest::newRow("cut off") << usual.chopped(1);
        QTest::newRow("gone on with") << usual + " ";
        QTest::newRow("byte-order mark") << "\xef\xbb\xbf" + usual;
        QTest::newRow("another key") << QByteArray(usual).replace("filepath", "filename");
        QTest::newRow("key twice") << QByteArray(usual).replace("\"type\": \"video\"",
                                                                "\"type\": \"video\",\n            \"type\": \"x\"");
        QTest::newRow("escape") << QByteArray(usual).replace("a.mp4", "a\\n.mp4");
        QTest::newRow("bare line break") << QByteArray(usual).replace("a.mp4", "a\n.mp4");
        QTest::newRow("number") << QByteArray(usual).replace("\"video\"", "7");
        QTest::newRow("broken UTF-8") << QByteArray(usual).replace("a.mp4", "a\xff.mp4");
        QTest::newRow("object") << QByteArray("{\n}\n");
    }

    void otherTextsAreLeftToTheToolkit()
    {
        QFETCH(const QByteArray, text);
        QVERIFY(!fromJsonText(text));
    }

    void whateverIsReadIsWhatTheToolkitReads()
    {
        const QByteArray usual =
            toJsonText({{"/a.mp4", {{"type", "video"}}}, {"/b.mp3", {{"type", "audio"}, {"x", "y"}}}});
        QRandomGenerator random(20261121);
        int understood = 0;
        for (int round = 0; round < 20000; ++round) {
            QByteArray text = usual;
            for (quint32 changes = 1 + random.bounded(2U); changes > 0; --changes)
                text[random.bounded(text.size())] = static_cast<char>(random.bounded(256U));
            const auto records = fromJsonText(text);
            if (!records)
                continue;
            ++understood;
            const QJsonDocument document = QJsonDocument::fromJson(text);
            QVERIFY(document.isArray());
            QCOMPARE(QJsonDocument::fromJson(asTheToolkitWrites(*records)), document);
        }
        QVERIFY(understood > 100);
    }
};

REGISTER_TEST(testrun::core<TestFileRecordText>);
#include "test_filerecordtext.moc"
