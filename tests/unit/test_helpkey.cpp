// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "app/webaddresses.h"
#include "mainwindow/helpkey.h"
#include "mainwindow/notices/notices.h"
#include "platform/files/file_opening.h"
#include "tests/support/addresses.h"
#include "tests/support/testrun.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// F1 and the manual, in folders of the test's own.
class TestHelpKey : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_settings->clear();
        m_shown.clear();
        m_folder = std::make_unique<QTemporaryDir>();
        m_key = std::make_unique<HelpKey>(nullptr, m_notices, *m_settings,
                                          QStringList{m_folder->filePath("beside"), m_folder->filePath("system")});
        connect(&m_notices, &Notices::posted, m_key.get(), [this](const Notice& notice) { m_shown.append(notice); });
    }

    void cleanup() { m_key.reset(); }

    void keyOpensTheManualFromAnyWidget_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("field") << 0;
        QTest::newRow("drop-down list") << 1;
        QTest::newRow("modal dialog") << 2;
        QTest::newRow("menu") << 3;
    }

    void keyOpensTheManualFromAnyWidget()
    {
        QFETCH(const int, kind);
        const QString page = makeManual(QStringLiteral("beside"));
        const OpenedAddresses system({"file"});
        const std::unique_ptr<QWidget> widget = makeWidget(kind);
        widget->show();
        QTest::keyClick(widget.get(), Qt::Key_F1);
        QCOMPARE(system.files(), QStringList{page});
        QVERIFY(m_shown.isEmpty());
    }

    void firstFolderThatHasTheManualCounts()
    {
        const QString installed = makeManual(QStringLiteral("system"));
        {
            const OpenedAddresses system({"file"});
            m_key->openManual();
            QCOMPARE(system.files(), QStringList{installed});
        }
        const QString beside = makeManual(QStringLiteral("beside"));
        const OpenedAddresses system({"file"});
        m_key->openManual();
        QCOMPARE(system.files(), QStringList{beside});
    }

    void otherKeysAreLeftAlone()
    {
        makeManual(QStringLiteral("beside"));
        const OpenedAddresses system({"file"});
        QLineEdit field;
        field.show();
        QTest::keyClick(&field, Qt::Key_F2);
        QTest::keyClick(&field, Qt::Key_F1, Qt::ShiftModifier);
        QTest::keyClick(&field, Qt::Key_F1, Qt::ControlModifier);
        QTest::keyClicks(&field, QStringLiteral("a1"));
        QCOMPARE(field.text(), QStringLiteral("a1"));
        QVERIFY(system.opened().isEmpty());
    }

    void heldKeyOpensTheManualOnce()
    {
        makeManual(QStringLiteral("beside"));
        const OpenedAddresses system({"file"});
        QLineEdit field;
        for (const bool isRepeat : {false, true, true}) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier, QString(), isRepeat);
            QCoreApplication::sendEvent(&field, &press);
        }
        QCOMPARE(system.opened().size(), 1);
    }

    void keyThatIsAHotkeyOpensNothing_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::newRow("recording") << QString(settingskeys::kRecordingHotkey);
        QTest::newRow("screenshot") << QString(settingskeys::kScreenshotHotkey);
    }

    void keyThatIsAHotkeyOpensNothing()
    {
        QFETCH(const QString, setting);
        makeManual(QStringLiteral("beside"));
        m_settings->setValue(setting, QStringLiteral("F1"));
        const OpenedAddresses system({"file"});
        QLineEdit field;
        QTest::keyClick(&field, Qt::Key_F1);
        QVERIFY(system.opened().isEmpty());
        QVERIFY(m_shown.isEmpty());
    }

    void missingManualIsReportedWithTheOneOnTheWeb()
    {
        const OpenedAddresses system({"file", "https"});
        m_key->openManual();
        QVERIFY(system.opened().isEmpty());
        QCOMPARE(m_shown.size(), 1);
        QCOMPARE(m_shown.constFirst().text, QStringLiteral("The manual of this version is missing."));
        QCOMPARE(m_shown.constFirst().actionText, QStringLiteral("Guide"));
        m_shown.constFirst().action();
        QCOMPARE(system.opened(), QList<QUrl>{QUrl(QLatin1String(webaddresses::kGuidePage))});
    }

    void manualThatNoProgramOpensIsReportedWithItsPlace()
    {
        const QString page = makeManual(QStringLiteral("beside"));
        // Off screen nothing opens anything.
        platform::setOpeningWatched(false);
        m_key->openManual();
        platform::setOpeningWatched(true);
        QCOMPARE(m_shown.size(), 1);
        QCOMPARE(m_shown.constFirst().text,
                 QStringLiteral("No program can open %1.").arg(QDir::toNativeSeparators(page)));
        QCOMPARE(m_shown.constFirst().actionText, QStringLiteral("Show in Folder"));
    }

private:
    QString makeManual(const QString& name)
    {
        QDir(m_folder->path()).mkpath(name);
        QFile page(m_folder->path() + QLatin1Char('/') + name + QLatin1String("/index.html"));
        [&] { QVERIFY(page.open(QIODevice::WriteOnly)); }();
        return page.fileName();
    }

    static std::unique_ptr<QWidget> makeWidget(int kind)
    {
        switch (kind) {
        case 0:
            return std::make_unique<QLineEdit>();
        case 1:
            return std::make_unique<QComboBox>();
        case 2: {
            auto dialog = std::make_unique<QDialog>();
            dialog->setModal(true);
            return dialog;
        }
        default: {
            auto menu = std::make_unique<QMenu>();
            menu->addAction(QStringLiteral("entry"));
            return menu;
        }
        }
    }

    const std::unique_ptr<QSettings> m_settings = openSettings();
    Notices m_notices;
    QList<Notice> m_shown;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<HelpKey> m_key;
};

REGISTER_TEST(testrun::gui<TestHelpKey>);

#include "test_helpkey.moc"
