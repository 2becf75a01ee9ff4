// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "tests/support/layoutfaults.h"
#include "tests/support/testprofile.h"
#include "tests/support/testrun.h"
#include "tests/support/translationfile.h"
#include "tests/tour/tour.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <memory>

namespace {

/// Folders that a user has, whatever the test's own are called.
void storeFolders()
{
    const auto settings = openSettings();
    settings->setValue(settingskeys::kFirstRun, false);
    settings->setValue(settingskeys::kRecordingSaveLocation, QStringLiteral("/home/user/Videos/Kestrano"));
    settings->setValue(settingskeys::kScreenshotSaveLocation, QStringLiteral("/home/user/Pictures/Kestrano"));
}

/// A window of a button and a label that have as much room as they want.
class Sample : public QWidget
{
public:
    Sample()
    {
        button.setObjectName(QStringLiteral("button"));
        label.setObjectName(QStringLiteral("label"));
        button.setGeometry({QPoint(10, 10), button.sizeHint()});
        label.setGeometry({QPoint(10, 60), label.sizeHint()});
        resize(400, 100);
        show();
    }

    QPushButton button{QStringLiteral("Aufnahme starten"), this};
    QLabel label{QStringLiteral("Speicherort"), this};
};

/// A window manager may have the window laid out once more.
QStringList lastingFaults(const QWidget& window)
{
    constexpr int kLaidOutMs = 2000;
    QStringList faults;
    const auto isFaultless = [&] { return (faults = layoutFaults(window)).isEmpty(); };
    (void)QTest::qWaitFor(isFaultless, kLaidOutMs);
    return faults;
}

} // namespace

/// Every window, page, overlay and dialog in every language: nothing is cut off, nothing lies over another thing, and
/// every text is one that is translated.
class TestLayout : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        storeFolders();
        applyDefaultSettings(*openSettings());
    }

    void nothingIsCutOffOrLiesOverAnother_data()
    {
        QTest::addColumn<QString>("code");
        for (const auto& [position, code] : settingstables::kLanguageCodes)
            QTest::newRow(qPrintable(code)) << code;
    }

    void nothingIsCutOffOrLiesOverAnother()
    {
        QFETCH(const QString, code);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(code));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QStringList faults;
        int stops = 0;
        tour::everything([&](const tour::Stop& stop) {
            ++stops;
            for (const QWidget* const window : stop.windows) {
                for (const QString& fault : lastingFaults(*window))
                    faults.append(QStringLiteral("%1: %2").arg(QLatin1String(stop.name), fault));
            }
        });
        QVERIFY(stops > 35);
        // All of them: a failure's own message would be cut off.
        for (const QString& fault : std::as_const(faults))
            qWarning().noquote() << fault;
        QCOMPARE(faults.size(), 0);
    }

    /// Asked for when a window is made, shown, or notified of another language.
    void everyTextAskedForIsAKey()
    {
        ListingTranslator listing;
        QVERIFY(QCoreApplication::installTranslator(&listing));
        tour::everything([](const tour::Stop& stop) {
            for (QWidget* const window : stop.windows) {
                QEvent change(QEvent::LanguageChange);
                QCoreApplication::sendEvent(window, &change);
            }
        });
        const QStringList keys = translationfile::keys(QStringLiteral("en_US"));
        QSet<QString> missing = listing.ownTexts();
        QVERIFY(missing.size() > 60);
        missing.subtract({keys.begin(), keys.end()});
        // The names of the formats are the same everywhere.
        for (const auto& names : {settingstables::kRecordingFormats, settingstables::kScreenshotFormats}) {
            for (const auto& [position, name] : names)
                missing.remove(name);
        }
        QCOMPARE(missing, QSet<QString>());
    }

    /// What Qt brings along speaks the language as well.
    void menuOfAFieldIsTranslated()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(QStringLiteral("de_DE")));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QLineEdit field;
        const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
        QStringList texts;
        for (const QAction* const entry : menu->actions())
            texts.append(entry->text().section(u'\t', 0, 0));
        texts.removeAll(QString());
        QCOMPARE(texts.first(7), QStringList({"&Rückgängig", "&Wiederholen", "&Ausschneiden", "&Kopieren", "&Einfügen",
                                              "Löschen", "Alles auswählen"}));
    }

    void folderDialogIsTranslated()
    {
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(QStringLiteral("de_DE")));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QFileDialog dialog;
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setFileMode(QFileDialog::Directory);
        dialog.show();
        QStringList texts;
        for (const QLabel* const label : dialog.findChildren<QLabel*>())
            texts.append(label->text());
        for (const QPushButton* const button : dialog.findChildren<QPushButton*>())
            texts.append(button->text());
        for (const char* text : {"Suchen in:", "Ordner:", "Dateityp:", "Aus&wählen", "Abbrechen"})
            QVERIFY2(texts.contains(QString::fromUtf8(text)), qPrintable(texts.join(u'|')));
    }

    void faultlessWindowHasNoFaults()
    {
        const Sample sample;
        QCOMPARE(layoutFaults(sample), QStringList());
    }

    void cutOffTextIsFound()
    {
        Sample sample;
        sample.label.resize(sample.label.fontMetrics().horizontalAdvance(sample.label.text()) - 1,
                            sample.label.height());
        QCOMPARE(layoutFaults(sample).size(), 1);
        QVERIFY(layoutFaults(sample).constFirst().startsWith(QLatin1String("label has ")));
        sample.button.resize(60, sample.button.height());
        QCOMPARE(layoutFaults(sample).size(), 2);
    }

    void partBeyondItsWindowIsFound()
    {
        Sample sample;
        sample.label.move(390, 60);
        QCOMPARE(layoutFaults(sample), QStringList{QStringLiteral("label reaches beyond QWidget")});
    }

    void partsOverOneAnotherAreFound()
    {
        Sample sample;
        sample.label.move(20, 15);
        QCOMPARE(layoutFaults(sample), QStringList{QStringLiteral("button lies over label")});
    }
};

REGISTER_TEST(testrun::gui<TestLayout>);

#include "test_layout.moc"
