// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "app/settingstables.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/scmainwindow.h"
#include "tests/support/addresses.h"
#include "tests/support/shownwindow.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

/// Nothing of this is what the program would have written, under any key.
QList<QVariant> oddValues()
{
    return {QVariant(),
            QVariant(42),
            QVariant(QString("no such thing")),
            QVariant(u"\u9332\u753b \"\n%1%20\\"_qs),
            QVariant(QString(20000, u'x')),
            QVariant(QStringList{"a", "b"}),
            QVariant(QByteArray("\0\xff\n", 3))};
}

bool isFormat(const QString& key)
{
    return key == settingskeys::kRecordingFormat || key == settingskeys::kScreenshotFormat;
}

} // namespace

/// A store that holds something else than it should under one key: the window comes up, its pages and dialogs can be
/// used, and the other keys are left as they are.
class TestWrongSettings : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // Odd folders are folders below the working one, where they are made.
        m_folder = std::make_unique<QTemporaryDir>();
        m_workingFolder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder->path()));
    }

    void cleanup()
    {
        QVERIFY(QDir::setCurrent(m_workingFolder));
        m_folder.reset();
    }

    void oddValueUnderAKeyIsSurvived_data()
    {
        QTest::addColumn<QString>("key");
        for (const auto& [key, value] : defaultSettings())
            QTest::newRow(qPrintable(key)) << key;
    }

    void oddValueUnderAKeyIsSurvived()
    {
        QFETCH(const QString, key);
        const OpenedAddresses browser({"http", "https"});
        const QList<QVariant> values = oddValues();
        for (const QVariant& value : values) {
            store(key, value);
            SCMainWindow window;
            window.show();
            QVERIFY(window.isVisible());
            for (const char* tab : {"screenshotTab", "filesTab", "recordingTab"})
                window.findChild<QPushButton*>(QLatin1String(tab))->click();
            openAndClose(window, key, value);
            expectOthersUntouched(key);
        }
        QVERIFY(key == settingskeys::kFirstRun || browser.opened().isEmpty());
    }

    /// A language that there is none of is that of no entry of the menu, and choosing one mends it.
    void languageIsMendedByChoosingOne()
    {
        store(settingskeys::kLanguage, QVariant(42));
        SCMainWindow window;
        window.show();
        window.findChild<MainMenu*>()->chooseLanguage(1);
        QCOMPARE(m_settings->value(settingskeys::kLanguage).toString(), settingstables::kLanguageCodes.at(1));
    }

private:
    void store(const QString& key, const QVariant& value)
    {
        m_settings->clear();
        applyDefaultSettings(*m_settings);
        m_settings->setValue(settingskeys::kFirstRun, false);
        m_settings->setValue(settingskeys::kRecordingSaveLocation, m_folder->path());
        m_settings->setValue(settingskeys::kScreenshotSaveLocation, m_folder->path());
        m_before.clear();
        for (const auto& [name, standard] : defaultSettings())
            m_before.insert(name, m_settings->value(name));
        m_settings->setValue(key, value);
    }

    /// The settings window as the menu opens it, or the box that says why it does not open.
    static void openAndClose(const SCMainWindow& window, const QString& key, const QVariant& value)
    {
        const messagebox::Recorder boxes;
        window.findChild<MainMenu*>()->openSettings();
        auto* const settings = shownWindow<SCSettingsWindow>();
        QVERIFY2((settings == nullptr) == isFormat(key), qPrintable(value.toString().left(40)));
        QCOMPARE(boxes.calls().size(), std::size_t(isFormat(key) ? 1 : 0));
        delete settings;
        window.findChild<MainMenu*>()->openAbout();
        QVERIFY(shownWindow<SCAboutWindow>() != nullptr);
        delete shownWindow<SCAboutWindow>();
    }

    void expectOthersUntouched(const QString& odd) const
    {
        const auto group = [](const QString& key) { return key.section(u'/', 0, 0); };
        for (auto entry = m_before.begin(); entry != m_before.end(); ++entry) {
            // The options of the pointer go together.
            const bool belongs = group(odd) == QLatin1String("mouse") && group(entry.key()) == group(odd);
            if (entry.key() != odd && !belongs)
                QVERIFY2(m_settings->value(entry.key()) == entry.value(), qPrintable(entry.key()));
        }
    }

    std::unique_ptr<QSettings> m_settings = openSettings();
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_workingFolder;
    QMap<QString, QVariant> m_before;
};

REGISTER_TEST(windowtest::run<TestWrongSettings>);

#include "test_wrongsettings.moc"
