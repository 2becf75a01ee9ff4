// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/settings.h"
#include "tests/support/settingsrefuge.h"
#include "tests/support/testrun.h"

#include <QCoreApplication>
#include <QTest>

/// The one place that opens the store, where it is the registry.
class TestSettingsStore : public QObject
{
    Q_OBJECT

private:
    SettingsRefuge m_registry;

private slots:
    void initTestCase() { appidentity::apply(); }

    void cleanup() { openSettings()->clear(); }

    void theStoreIsTheUsersRegistryBranch()
    {
        const auto settings = openSettings();
        QCOMPARE(settings->format(), QSettings::NativeFormat);
        QVERIFY2(settings->fileName().endsWith("\\Software\\Tolvaran\\Kestrano"), qPrintable(settings->fileName()));
        QVERIFY(!settings->fallbacksEnabled());
        QCOMPARE(settingsTrouble(*settings), QString());
    }

    void theDefaultsAreStoredWithTheirTypes()
    {
        {
            const auto settings = openSettings();
            applyDefaultSettings(*settings);
        }
        const auto settings = openSettings();
        QCOMPARE(settings->allKeys().size(), 15);
        for (const auto& [key, value] : defaultSettings()) {
            if (value.typeId() == QMetaType::Bool)
                QCOMPARE(settings->value(key).toBool(), value.toBool());
            else
                QCOMPARE(settings->value(key).toString(), value.toString());
        }
    }

    void objectsSeeEachOthersWritesAtOnce()
    {
        const auto one = openSettings();
        const auto other = openSettings();
        one->setValue(settingskeys::kMicSwitch, true);
        QCOMPARE(other->value(settingskeys::kMicSwitch).toBool(), true);
    }

    void aStoredValueOutsideItsTableIsNotRepaired()
    {
        const auto settings = openSettings();
        settings->setValue(settingskeys::kRecordingFormat, "MKV");
        applyDefaultSettings(*settings);
        QCOMPARE(settings->value(settingskeys::kRecordingFormat).toString(), QString("MKV"));
    }
};

REGISTER_TEST(testrun::core<TestSettingsStore>);
#include "test_settingsstore_win.moc"
