// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "tests/support/messagecapture.h"
#include "tests/support/testprofile.h"
#include "tests/support/testregistry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTest>

/// The one place that opens the store, where it is a file.
class TestSettingsStore : public QObject
{
    Q_OBJECT

private:
    QString m_file;

    QByteArray content() const
    {
        QFile file(m_file);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QByteArray& content) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(m_file).path()));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

public:
    explicit TestSettingsStore(const QString& profile) : m_file(profile + "/config/Tolvaran/Kestrano.conf") {}

private slots:
    void cleanup()
    {
        QDir(QFileInfo(m_file).path()).removeRecursively();
        QFile::remove(QFileInfo(m_file).path());
    }

    void theStoreIsAFileInTheConfigurationFolder()
    {
        const auto settings = openSettings();
        QCOMPARE(settings->fileName(), m_file);
        QVERIFY(!settings->fallbacksEnabled());
        QCOMPARE(settingsTrouble(*settings), QString());
    }

    void theGroupGeneralSurvivesARestart()
    {
        {
            const auto settings = openSettings();
            settings->setValue(settingskeys::kLanguage, "de_DE");
            settings->setValue(settingskeys::kFirstRun, false);
        }
        QCOMPARE(content(), QByteArray("[general]\nfirstRun=false\nlanguage=\"de_DE\"\n"));
        const auto settings = openSettings();
        QVERIFY(settings->contains(settingskeys::kFirstRun));
        QCOMPARE(settings->value(settingskeys::kLanguage).toString(), QString("de_DE"));
    }

    void objectsSeeEachOthersWritesAtOnce()
    {
        const auto one = openSettings();
        const auto other = openSettings();
        one->setValue(settingskeys::kMicSwitch, true);
        QCOMPARE(other->value(settingskeys::kMicSwitch), QVariant(true));
    }

    void everyDefaultIsInTheFile()
    {
        {
            const auto settings = openSettings();
            applyDefaultSettings(*settings);
        }
        QCOMPARE(content().count('='), 15);
        QVERIFY(content().contains("[mouse]\nshowCursor=true\nshowHighlight=true\nswitch=true\n"));
    }

    void aBinaryStoreIsKeptAndStartedAgain()
    {
        const QByteArray binary("\x7f"
                                "ELF\0\0garbage",
                                13);
        write(binary);
        {
            const auto settings = openSettings();
            QVERIFY(settingsTrouble(*settings).contains("cannot be understood"));
            applyDefaultSettings(*settings);
            QCOMPARE(settings->value(settingskeys::kRecordingFormat).toString(), QString("MP4"));
        }
        QFile copy(m_file + ".unreadable");
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), binary);
        QVERIFY(content().startsWith("[general]\n"));
    }

    void aBrokenStoreKeepsWhatCanBeRead()
    {
        write("garbage\n[recording\nformat\n[recording]\nformat=\"MKV\"\n");
        const auto settings = openSettings();
        applyDefaultSettings(*settings);
        QCOMPARE(settings->value(settingskeys::kRecordingFormat).toString(), QString("MKV"));
        QCOMPARE(settings->value(settingskeys::kMouseSwitch), QVariant(true));
    }

    void aStoreThatCannotBeReadIsNamed()
    {
        QVERIFY(QDir().mkpath(m_file));
        const auto settings = openSettings();
        QVERIFY(settingsTrouble(*settings).contains("cannot be read"));
        QVERIFY(settingsTrouble(*settings).contains(m_file));
        applyDefaultSettings(*settings);
        QCOMPARE(settings->value(settingskeys::kRecordingFormat).toString(), QString("MP4"));
    }

    void aStoreThatCannotBeWrittenKeepsChangesForTheRun()
    {
        // A file stands where the folder should be.
        QFile blocker(QFileInfo(m_file).path());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const auto settings = openSettings();
        QVERIFY2(settingsTrouble(*settings).contains("cannot be written"), qPrintable(settingsTrouble(*settings)));
        applyDefaultSettings(*settings);
        QCOMPARE(openSettings()->value(settingskeys::kRecordingFormat).toString(), QString("MP4"));
    }
};

static int run(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const QCoreApplication application(argc, argv);
    TestSettingsStore test(profile.path());
    return QTest::qExec(&test, argc, argv);
}

REGISTER_TEST(run);

#include "test_settingsstore_x11.moc"
