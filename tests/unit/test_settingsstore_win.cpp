#include "app/appidentity.h"
#include "app/settings.h"

#include <QCoreApplication>
#include <QTest>

#include <windows.h>

#include <string>

namespace {

/// Puts an empty key in the place of the current user's registry, for this process, while the object lives.
class PrivateRegistry
{
public:
    PrivateRegistry() : m_path(QString("Software\\KestranoTest%1").arg(GetCurrentProcessId()).toStdWString())
    {
        RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                        &m_key, nullptr);
        m_isPrivate = m_key != nullptr && RegOverridePredefKey(HKEY_CURRENT_USER, m_key) == ERROR_SUCCESS;
    }
    ~PrivateRegistry()
    {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(m_key);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    }
    PrivateRegistry(const PrivateRegistry&) = delete;
    PrivateRegistry& operator=(const PrivateRegistry&) = delete;

    bool isPrivate() const { return m_isPrivate; }

private:
    std::wstring m_path;
    HKEY m_key = nullptr;
    bool m_isPrivate = false;
};

} // namespace

/// The one place that opens the store, where it is the registry.
class TestSettingsStore : public QObject
{
    Q_OBJECT

private:
    PrivateRegistry m_registry;

private slots:
    void initTestCase()
    {
        QVERIFY(m_registry.isPrivate());
        appidentity::apply();
    }

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

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "test_settingsstore_win.moc"
