// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "app/settingsfile.h"
#include "app/settingstables.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

namespace {

QSettings::Format testFormat()
{
    static const QSettings::Format format =
        QSettings::registerFormat("kestranotest", settingsfile::read, settingsfile::write, Qt::CaseSensitive);
    return format;
}

QStringList fifteenKeys()
{
    return {"general/firstRun",       "general/language",       "hotkeys/recording",      "hotkeys/screenshot",
            "mouse/showCursor",       "mouse/showHighlight",    "mouse/switch",           "recording/format",
            "recording/micSwitch",    "recording/saveLocation", "recording/screenSwitch", "recording/speakerSwitch",
            "recording/webcamSwitch", "screenshot/format",      "screenshot/saveLocation"};
}

/// The text of the exception that a lookup throws; empty when it throws none.
template <typename Table, typename Key>
QString lookupFault(const Table& table, const Key& key)
{
    try {
        table.at(key);
    } catch (const std::out_of_range& fault) {
        return QString::fromLatin1(fault.what());
    }
    return {};
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    int m_fileCount = 0;

    QString newFile() { return m_folder.filePath(QString("store%1.kestranotest").arg(++m_fileCount)); }

private slots:
    void recordingFormatTable()
    {
        const QStringList expected{"MP4", "AVI", "FLV", "GIF", "MP3", "AAC", "FLAC"};
        compareTables(settingstables::kRecordingFormats, settingstables::kRecordingFormatPositions, expected);
    }

    void screenshotFormatTable()
    {
        compareTables(settingstables::kScreenshotFormats, settingstables::kScreenshotFormatPositions, {"PNG", "JPG"});
    }

    void languageTables()
    {
        compareTables(settingstables::kLanguageCodes, settingstables::kLanguagePositions,
                      {"en_US", "de_DE", "oc_FR", "es_ES", "pt_PT", "it_IT", "zh_CN", "zh_TW", "ja_JP"});
        compareTables(settingstables::kLanguageMenuNames, settingstables::kLanguageMenuPositions,
                      {"English", "Deutsch", u8"Français", u8"Español", u8"Português", "Italiano", u8"简体中文",
                       u8"繁體中文", u8"日本語"});
    }

    void aLookupOfAMissingEntryThrows()
    {
        const QString fault = "invalid map<K, T> key";
        QCOMPARE(lookupFault(settingstables::kRecordingFormats, 7), fault);
        QCOMPARE(lookupFault(settingstables::kRecordingFormats, -1), fault);
        QCOMPARE(lookupFault(settingstables::kRecordingFormatPositions, QString("MKV")), fault);
        QCOMPARE(lookupFault(settingstables::kRecordingFormatPositions, QString("mp4")), fault);
        QCOMPARE(lookupFault(settingstables::kScreenshotFormatPositions, QString()), fault);
        QCOMPARE(lookupFault(settingstables::kLanguagePositions, QString("fr_FR")), fault);
        QCOMPARE(lookupFault(settingstables::kRecordingFormats, 6), QString());
    }

    void aFreshStoreGetsAllFifteenDefaults()
    {
        QSettings settings(newFile(), testFormat());
        applyDefaultSettings(settings);
        QStringList keys = settings.allKeys();
        keys.sort();
        QCOMPARE(keys, fifteenKeys());
        QCOMPARE(settings.value(settingskeys::kLanguage), QVariant(QString("en_US")));
        QCOMPARE(settings.value(settingskeys::kFirstRun), QVariant(true));
        QCOMPARE(settings.value(settingskeys::kRecordingHotkey), QVariant(QString("F9")));
        QCOMPARE(settings.value(settingskeys::kScreenshotHotkey), QVariant(QString("F10")));
        QCOMPARE(settings.value(settingskeys::kScreenSwitch), QVariant(true));
        QCOMPARE(settings.value(settingskeys::kSpeakerSwitch), QVariant(true));
        QCOMPARE(settings.value(settingskeys::kMicSwitch), QVariant(false));
        QCOMPARE(settings.value(settingskeys::kWebcamSwitch), QVariant(false));
        QCOMPARE(settings.value(settingskeys::kRecordingFormat), QVariant(QString("MP4")));
        QCOMPARE(settings.value(settingskeys::kScreenshotFormat), QVariant(QString("PNG")));
        QCOMPARE(settings.value(settingskeys::kMouseSwitch), QVariant(true));
        QCOMPARE(settings.value(settingskeys::kMouseShowCursor), QVariant(true));
        QCOMPARE(settings.value(settingskeys::kMouseShowHighlight), QVariant(true));
    }

    void defaultFoldersAreMoviesAndPicturesAndAreNotMade()
    {
        const QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation) + "/Kestrano";
        const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) + "/Kestrano";
        // Where the system does not let a test have folders of its own, another one may have made them.
        const bool hadMovies = QDir(movies).exists();
        const bool hadPictures = QDir(pictures).exists();
        QSettings settings(newFile(), testFormat());
        applyDefaultSettings(settings);
        QCOMPARE(settings.value("recording/saveLocation").toString(), movies);
        QCOMPARE(settings.value("screenshot/saveLocation").toString(), pictures);
        QCOMPARE(QDir(movies).exists(), hadMovies);
        QCOMPARE(QDir(pictures).exists(), hadPictures);
    }

    void aStoredValueOutsideItsTableIsNotRepaired()
    {
        QSettings settings(newFile(), testFormat());
        settings.setValue("recording/format", "MKV");
        settings.setValue("general/language", "");
        applyDefaultSettings(settings);
        QCOMPARE(settings.value("recording/format").toString(), QString("MKV"));
        QCOMPARE(settings.value("general/language").toString(), QString());
    }

    void onlyTheDeletedKeyIsRestored()
    {
        QSettings settings(newFile(), testFormat());
        for (const QString& key : fifteenKeys())
            settings.setValue(key, "kept");
        settings.remove("mouse/showCursor");
        applyDefaultSettings(settings);
        for (const QString& key : fifteenKeys()) {
            if (key != "mouse/showCursor")
                QCOMPARE(settings.value(key).toString(), QString("kept"));
        }
        QCOMPARE(settings.value("mouse/showCursor"), QVariant(true));
    }

    void severalInstancesSeeTheSameDataAtOnce()
    {
        const QString path = newFile();
        QSettings writer(path, testFormat());
        QSettings reader(path, testFormat());
        writer.setValue(settingskeys::kRecordingFormat, "GIF");
        QCOMPARE(reader.value(settingskeys::kRecordingFormat).toString(), QString("GIF"));
        writer.remove(settingskeys::kRecordingFormat);
        QVERIFY(!reader.contains(settingskeys::kRecordingFormat));
    }

    void anAbsentKeyIsFalseOrEmpty()
    {
        const QSettings settings(newFile(), testFormat());
        QCOMPARE(settings.value(settingskeys::kFirstRun).toBool(), false);
        QCOMPARE(settings.value(settingskeys::kLanguage).toString(), QString());
    }

private:
    static void compareTables(const settingstables::PositionToText& texts,
                              const settingstables::TextToPosition& positions, const QStringList& expected)
    {
        QCOMPARE(texts.size(), static_cast<int>(expected.size()));
        QCOMPARE(positions.size(), static_cast<int>(expected.size()));
        for (int position = 0; position < texts.size(); ++position) {
            QCOMPARE(texts.at(position), expected.at(position));
            QCOMPARE(positions.at(expected.at(position)), position);
        }
    }
};

REGISTER_TEST(testrun::core<TestSettings>);

#include "test_settings.moc"
