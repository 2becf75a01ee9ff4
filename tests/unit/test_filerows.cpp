// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"
#include "app/settingstables.h"
#include "files/filedetails.h"
#include "files/fileitemdelegate.h"
#include "files/filerow.h"
#include "files/filerowtexts.h"
#include "files/filestore.h"
#include "files/scfilemanager.h"
#include "tests/support/addresses.h"
#include "tests/support/filelibrary.h"
#include "tests/support/windowtest.h"

#include <QAccessible>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QLocale>
#include <QPainter>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

using FileItemDelegate = SCFileManager::FileItemDelegate;

namespace {

constexpr QColor kBackground(0x28, 0x28, 0x2e);
constexpr QColor kGrey(0x99, 0xa1, 0xb0);

const QVariantMap kVideo{{"type", "video"},
                         {"dateAdded", "2026-03-07T14:05:09"},
                         {"sizeBytes", qint64{3'565'158}},
                         {"durationMs", qint64{3'723'900}}};

QImage painted(const QString& name, const QVariantMap& properties, int widthPx)
{
    QStandardItemModel model;
    model.appendRow(new FileRow({QLatin1String("/videos/") + name, properties}, FileProgress::None));
    const QRect row(0, 0, widthPx, FileItemDelegate::kHeight);
    QImage image(row.size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.rect = row;
    option.state = QStyle::State_Enabled;
    option.font.setPixelSize(13);
    const FileItemDelegate delegate;
    delegate.paint(&painter, option, model.index(0, 0));
    painter.end();
    return image;
}

/// First and last column of pixels that is not background, of those from left to right; (-1, -1) without one.
QPair<int, int> inkBetween(const QImage& image, int left, int right)
{
    QPair<int, int> ink{-1, -1};
    for (int x = left; x <= right; ++x) {
        for (int y = 0; y < FileItemDelegate::kHeight - 1; ++y) {
            if (image.pixelColor(x, y) == kBackground)
                continue;
            ink.first = ink.first < 0 ? x : ink.first;
            ink.second = x;
            break;
        }
    }
    return ink;
}

using Runs = QList<QPair<int, int>>;

/// Of pixels that are not background, between gaps that are wider than those within a text.
Runs runsOf(const QImage& image)
{
    constexpr int kGapPx = 10;
    Runs runs;
    for (int x = 0; x < image.width(); ++x) {
        if (inkBetween(image, x, x).first < 0)
            continue;
        if (runs.isEmpty() || x - runs.last().second > kGapPx)
            runs.append({x, x});
        runs.last().second = x;
    }
    return runs;
}

QJsonObject propertiesOnDisk(int record = 0)
{
    return QJsonDocument::fromJson(filelibrary::text()).array().at(record).toObject().value("properties").toObject();
}

} // namespace

/// What the rows of the file list say besides the name.
class TestFileRows : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QLocale::setDefault(QLocale(QStringLiteral("en_US")));
        LibraryRefuge::clear();
    }

    void textsAreInTheWayOfTheLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("size");
        QTest::newRow("English") << "en_US"
                                 << "3/7/26"
                                 << "3.6 MB";
        QTest::newRow("German") << "de_DE"
                                << "07.03.26"
                                << "3,6 MB";
        QTest::newRow("French") << "oc_FR"
                                << "07/03/2026"
                                << "3,6 Mo";
        QTest::newRow("Japanese") << "ja_JP"
                                  << "2026/03/07"
                                  << "3.6 MB";
    }

    void textsAreInTheWayOfTheLanguage()
    {
        QFETCH(const QString, code);
        QFETCH(const QString, date);
        QFETCH(const QString, size);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(code));
        const FileRowTexts texts = FileRowTexts::of(kVideo, FileProgress::None);
        // A user who has the system in that language may have chosen other forms there.
        const QLocale system = QLocale::system();
        const bool isSystems = QLocale().language() == system.language();
        const QString begin = isSystems ? system.toString(QDate(2026, 3, 7), QLocale::ShortFormat) : date;
        QVERIFY2(texts.date.startsWith(begin), qPrintable(texts.date));
        QVERIFY2(texts.date.contains(QStringLiteral("05")), qPrintable(texts.date));
        QCOMPARE(QString(texts.size).replace(QChar::Nbsp, u' '), size);
        QCOMPARE(texts.length, QStringLiteral("1:02:03"));
    }

    void everyLanguageHasALocaleOfItsOwn()
    {
        for (const auto& [position, code] : settingstables::kLanguageCodes) {
            SCTranslator translator;
            QVERIFY(translator.loadLanguage(code));
            QVERIFY2(QLocale().language() != QLocale::C, qPrintable(code));
            const QString date = FileRowTexts::of(kVideo, FileProgress::None).date;
            QVERIFY2(date.contains(QStringLiteral("05")) && !date.contains(u'B'), qPrintable(date));
        }
    }

    void lengthIsShownAsPlayersShowIt_data()
    {
        QTest::addColumn<qint64>("ms");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << qint64{0} << "0:00";
        QTest::newRow("seconds begun do not count") << qint64{7'999} << "0:07";
        QTest::newRow("minutes") << qint64{754'000} << "12:34";
        QTest::newRow("an hour") << qint64{3'600'000} << "1:00:00";
        QTest::newRow("days") << qint64{360'000'000} << "100:00:00";
    }

    void lengthIsShownAsPlayersShowIt()
    {
        QFETCH(const qint64, ms);
        QTEST(FileRowTexts::of({{"durationMs", ms}}, FileProgress::None).length, "text");
    }

    void stateSaysWhatIsTheMatter_data()
    {
        QTest::addColumn<QString>("property");
        QTest::addColumn<FileProgress>("progress");
        QTest::addColumn<QString>("state");
        QTest::newRow("whole") << "note" << FileProgress::None << "";
        QTest::newRow("under way") << "unfinished" << FileProgress::BeingRecorded << "Being recorded";
        QTest::newRow("at work") << "unfinished" << FileProgress::BeingFinished << "Being finished";
        QTest::newRow("put off") << "unfinished" << FileProgress::None << "Unfinished";
        QTest::newRow("failed") << "incomplete" << FileProgress::None << "Incomplete";
        QTest::newRow("gone") << "missing" << FileProgress::None << "Missing";
        QTest::newRow("unreadable") << "unreadable" << FileProgress::None << "Unreadable";
    }

    void stateSaysWhatIsTheMatter()
    {
        QFETCH(const QString, property);
        QFETCH(const FileProgress, progress);
        QFETCH(const QString, state);
        const FileRow row({QStringLiteral("/a.mp4"), {{property, true}}}, progress);
        const QString description = row.data(Qt::AccessibleDescriptionRole).toString();
        QVERIFY2(state.isEmpty() ? description.isEmpty() : description.startsWith(state), qPrintable(description));
        const bool hasReason = !state.isEmpty() && progress == FileProgress::None;
        QCOMPARE(!row.data(Qt::ToolTipRole).toString().isEmpty(), hasReason);
    }

    void screenReadersHearTheNameAndTheRest()
    {
        QListView view;
        QStandardItemModel model;
        model.appendRow(new FileRow({QStringLiteral("/videos/demo.mp4"), kVideo}, FileProgress::None));
        view.setModel(&model);
        view.show();
        QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(&view)->child(0);
        QVERIFY(row != nullptr);
        QCOMPARE(row->role(), QAccessible::ListItem);
        QCOMPARE(row->text(QAccessible::Name), QStringLiteral("demo.mp4"));
        const QString rest = row->text(QAccessible::Description);
        QVERIFY2(rest.startsWith(QLatin1String("Length: 1:02:03, 3.6 MB, 3/7/26")), qPrintable(rest));
    }

    void columnsEndWhereTheTextEndsAndStandBelowEachOther()
    {
        constexpr int kWidthPx = 620;
        const int textEnd = FileItemDelegate::textRect(QRect(0, 0, kWidthPx, 32)).right() - 8;
        QVariantMap other = kVideo;
        other.insert("sizeBytes", qint64{5'000});
        other.insert("durationMs", qint64{1'000});
        const QImage first = painted("a.mp4", kVideo, kWidthPx);
        const QImage second = painted("a.mp4", other, kWidthPx);
        const Runs ofFirst = runsOf(first);
        const Runs ofSecond = runsOf(second);
        // Name, length, size, date.
        QCOMPARE(ofFirst.size(), 4);
        QCOMPARE(ofSecond.size(), 4);
        QVERIFY2(qAbs(ofFirst.at(3).second - textEnd) <= 2, qPrintable(QString::number(ofFirst.at(3).second)));
        QCOMPARE(ofFirst.at(3), ofSecond.at(3));
        for (int column = 1; column < 3; ++column) {
            // But for the air at the right of a digit.
            QVERIFY(qAbs(ofFirst.at(column).second - ofSecond.at(column).second) <= 2);
            QVERIFY(ofFirst.at(column).first != ofSecond.at(column).first);
        }
    }

    void longNameIsCutOffBeforeTheColumns()
    {
        constexpr int kWidthPx = 620;
        const int textEnd = FileItemDelegate::textRect(QRect(0, 0, kWidthPx, 32)).right() - 8;
        const QString name = QString(120, u'M') + QLatin1String(".mp4");
        const QImage longName = painted(name, kVideo, kWidthPx);
        const QImage shortName = painted("a.mp4", kVideo, kWidthPx);
        // What stands at the right is the same to the last pixel.
        const int columns = inkBetween(shortName, 100, textEnd).first;
        QVERIFY(columns > 200);
        QCOMPARE(longName.copy(columns, 0, textEnd - columns, 32), shortName.copy(columns, 0, textEnd - columns, 32));
        // With room between, and without a sign of it.
        const auto ink = inkBetween(longName, 0, columns - 1);
        QVERIFY2(columns - ink.second >= 8, qPrintable(QString::number(ink.second)));
        const QImage withoutColumns = painted(name, {}, kWidthPx);
        QCOMPARE(longName.copy(0, 0, ink.second, 32), withoutColumns.copy(0, 0, ink.second, 32));
    }

    void narrowRowKeepsItsName()
    {
        const QImage narrow = painted("abcdefgh.mp4", kVideo, 180);
        const QImage bare = painted("abcdefgh.mp4", {}, 180);
        QCOMPARE(narrow, bare);
    }

    void stateIsTheLastColumnThatGoes()
    {
        QVariantMap incomplete = kVideo;
        incomplete.insert("incomplete", true);
        const QVariantMap stateAlone{{"incomplete", true}};
        const auto columns = [](const QVariantMap& properties, int widthPx) {
            return runsOf(painted("a.mp4", properties, widthPx)).size() - 1;
        };
        QCOMPARE(columns(incomplete, 620), 4);
        qsizetype last = 4;
        for (int widthPx = 620; widthPx > 180; widthPx -= 10) {
            const qsizetype now = columns(incomplete, widthPx);
            QVERIFY(now <= last);
            last = now;
            // As long as there is any column the state is one.
            QCOMPARE(now > 0, columns(stateAlone, widthPx) > 0);
        }
        QCOMPARE(last, 0);
        const int narrow = 260;
        QCOMPARE(painted("a.mp4", incomplete, narrow), painted("a.mp4", stateAlone, narrow));
        QVERIFY(painted("a.mp4", incomplete, narrow) != painted("a.mp4", {}, narrow));
    }

    void wrongTypesAreNoDetailsAndStay_data()
    {
        QTest::addColumn<QJsonValue>("value");
        QTest::newRow("text") << QJsonValue("12");
        QTest::newRow("array") << QJsonValue(QJsonArray{1, 2});
        QTest::newRow("object") << QJsonValue(QJsonObject{{"ms", 3}});
        QTest::newRow("truth") << QJsonValue(true);
        QTest::newRow("nothing") << QJsonValue(QJsonValue::Null);
    }

    void wrongTypesAreNoDetailsAndStay()
    {
        QFETCH(const QJsonValue, value);
        const QJsonObject wrong{{"type", "screenshot"},      {"dateAdded", 7},    {"sizeBytes", value},
                                {"durationMs", value},       {"incomplete", "x"}, {"unreadable", 1.5},
                                {"note", QJsonArray{1, "b"}}};
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("wrong.png"));
        const QString other = produced.add(QStringLiteral("right.png"));
        filelibrary::write(QJsonDocument(QJsonArray{QJsonObject{{"filepath", path}, {"properties", wrong}},
                                                    QJsonObject{{"filepath", other},
                                                                {"properties", QJsonObject{{"type", "screenshot"}}}}})
                               .toJson());
        const FileRowTexts texts = FileRowTexts::of(wrong.toVariantMap(), FileProgress::None);
        QVERIFY(texts.description().isEmpty());
        {
            const SCFileManager library;
            QTRY_COMPARE(propertiesOnDisk(1).value("sizeBytes"), QJsonValue(0));
            QCOMPARE(propertiesOnDisk(0), wrong);
        }
        QCOMPARE(propertiesOnDisk(0), wrong);
    }

    void numbersThatCannotBeAreReplaced_data()
    {
        QTest::addColumn<double>("number");
        QTest::newRow("negative") << -1.0;
        QTest::newRow("beyond everything") << 1e300;
    }

    void numbersThatCannotBeAreReplaced()
    {
        QFETCH(const double, number);
        QVariantMap properties{{"sizeBytes", number}};
        QVERIFY(!FileDetails::of(properties).sizeBytes);
        QVERIFY((FileDetails{12, {}, false}).writeTo(properties));
        QCOMPARE(properties, QVariantMap({{"sizeBytes", qint64{12}}}));
        QVERIFY(!(FileDetails{12, {}, false}).writeTo(properties));
    }

    void sizesAreReadInTheBackgroundShownAndKept()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("shot.png"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(2048, 'x')) == 2048);
        file.close();
        QListView view;
        SCFileManager library;
        library.addFile(path, QStringLiteral("screenshot"));
        library.setupView(&view, QString());
        const QModelIndex row = view.model()->index(0, 0);
        QVERIFY(!row.data(Qt::AccessibleDescriptionRole).toString().contains(QLatin1String("kB")));
        const QSignalSpy changed(view.model(), &QAbstractItemModel::dataChanged);
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(2048));
        QVERIFY(!changed.isEmpty());
        const QString shown = row.data(Qt::AccessibleDescriptionRole).toString();
        QVERIFY2(shown.startsWith(QLatin1String("2.0 kB, ")), qPrintable(shown));
        // A file of another size is read again by the next start.
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("abc") == 3);
        file.close();
        const SCFileManager restarted;
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(3));
    }

    void fileThatIsGoneSaysSoOnceItIsWanted()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("shot.png"));
        QListView view;
        {
            SCFileManager library;
            library.addFile(path, QStringLiteral("screenshot"));
            library.setupView(&view, QString());
            QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(0));
            QVERIFY(QFile::remove(path));
            library.openFile(path);
            const QModelIndex row = view.model()->index(0, 0);
            QTRY_VERIFY(row.data(Qt::AccessibleDescriptionRole).toString().startsWith(QLatin1String("Missing")));
            QTRY_COMPARE(propertiesOnDisk().value("missing"), QJsonValue(true));
        }
        // It is put back.
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("abc") == 3);
        file.close();
        const SCFileManager restarted;
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(3));
        QVERIFY(!propertiesOnDisk().contains("missing"));
    }

    void fileThatHasComeBackIsMissingNoMore()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("shot.png"));
        const QString away = path + QLatin1String(".away");
        const OpenedAddresses opener({"file"});
        SCFileManager library;
        library.addFile(path, QStringLiteral("screenshot"));
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(0));
        // As when a disk is taken out and plugged in again.
        QVERIFY(QFile::rename(path, away));
        library.openFile(path);
        QTRY_COMPARE(propertiesOnDisk().value("missing"), QJsonValue(true));
        QVERIFY(QFile::rename(away, path));
        library.openFile(path);
        QCOMPARE(opener.files(), QStringList{path});
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(0));
        QVERIFY(!propertiesOnDisk().contains("missing"));
    }

    void fileThatIsFoundMissingDuringARecordingSaysSoAfterIt()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("shot.png"));
        SCFileManager library;
        library.addFile(path, QStringLiteral("screenshot"));
        QTRY_COMPARE(propertiesOnDisk().value("sizeBytes"), QJsonValue(0));
        library.setFileInUse(produced.add(QStringLiteral("recorded.mp4")));
        QVERIFY(QFile::remove(path));
        library.openFile(path);
        library.setFileInUse({});
        QTRY_COMPARE(propertiesOnDisk().value("missing"), QJsonValue(true));
    }

    void recordingWhoseFileNeverCameSaysSo()
    {
        const QString path = ProducedFiles().folder() + QLatin1String("/none.mp4");
        QListView view;
        SCFileManager library;
        library.setFileInUse(path);
        library.addFile(path, QStringLiteral("video"));
        library.setupView(&view, QString());
        library.setFileInUse({});
        const QModelIndex row = view.model()->index(0, 0);
        QTRY_VERIFY(row.data(Qt::AccessibleDescriptionRole).toString().startsWith(QLatin1String("Missing")));
    }

    void recordingPutsOffTheFinishingOfAnother()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("first.mp4"));
        QListView view;
        SCFileManager library;
        library.setFileInUse(path);
        library.addFile(path, QStringLiteral("video"));
        library.setupView(&view, QString());
        const QModelIndex row = view.model()->index(0, 0);
        const auto shown = [&row] { return row.data(Qt::AccessibleDescriptionRole).toString(); };
        QVERIFY(shown().startsWith(QLatin1String("Being recorded")));
        library.setFileInUse({});
        QVERIFY(shown().startsWith(QLatin1String("Being finished")));
        library.setFileInUse(produced.folder() + QLatin1String("/second.mp4"));
        QVERIFY(shown().startsWith(QLatin1String("Unfinished")));
        QVERIFY(
            row.data(Qt::ToolTipRole).toString().startsWith(QLatin1String("The recording has not been finished yet")));
    }

    void detailsReachTheRowsOfTheFilterAndOfTwoRecordsOfAFile()
    {
        ProducedFiles produced;
        const QString path = produced.add(QStringLiteral("shot.png"));
        const QString added = produced.add(QStringLiteral("late.png"));
        QListView view;
        SCFileManager library;
        for (const char* type : {"screenshot", "note", "screenshot"})
            library.addFile(path, QLatin1String(type));
        library.setupView(&view, QStringLiteral("screenshot"));
        // Newer than what the view shows.
        library.addFile(added, QStringLiteral("screenshot"));
        QCOMPARE(view.model()->rowCount(), 2);
        for (int row = 0; row < 2; ++row)
            QTRY_VERIFY(view.model()->index(row, 0).data(FileRow::kPropertiesRole).toMap().contains("sizeBytes"));
        QTRY_COMPARE(propertiesOnDisk(0).value("sizeBytes"), QJsonValue(0));
    }
};

REGISTER_TEST(windowtest::run<TestFileRows>);

#include "test_filerows.moc"
