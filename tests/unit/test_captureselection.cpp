// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/activity.h"
#include "mainwindow/capture/captureselection.h"
#include "mainwindow/outputoptions.h"
#include "tests/support/regiontiles.h"
#include "tests/support/windowtest.h"
#include "ui_scmainwindow.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTest>

/// Which screen switch, format and mode go together.
class TestCaptureSelection : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(SCLogger::instance()->initialize()); }

    void init()
    {
        windowtest::resetSettings();
        m_form = std::make_unique<QMainWindow>();
        m_ui.setupUi(m_form.get());
        m_output = std::make_unique<OutputOptions>(OutputOptions::recordings(m_ui), *m_settings, m_activity);
        m_selection = std::make_unique<CaptureSelection>(m_ui, *m_output, *m_settings);
        m_output->showStored();
    }

    void cleanup()
    {
        m_selection.reset();
        m_output.reset();
    }

    void wholeScreenIsChosenAtFirst()
    {
        QCOMPARE(m_selection->mode(), CaptureMode::FullScreen);
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
        QVERIFY(m_selection->recordsVideo());
    }

    void storedSwitchIsShownAndAVideoFormatGivesWay_data()
    {
        QTest::addColumn<bool>("on");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("on") << true << "AVI"
                            << "AVI";
        QTest::newRow("off, a format with video") << false << "AVI"
                                                  << "MP3";
        QTest::newRow("off, an audio format") << false << "FLAC"
                                              << "FLAC";
    }

    void storedSwitchIsShownAndAVideoFormatGivesWay()
    {
        QFETCH(const bool, on);
        QFETCH(const QString, stored);
        m_settings->setValue(settingskeys::kScreenSwitch, on);
        m_settings->setValue(settingskeys::kRecordingFormat, stored);
        m_output->showStored();
        m_selection->restore();
        QCOMPARE(m_ui.screenSwitch->isChecked(), on);
        QTEST(m_ui.formatBox->currentText(), "shown");
        QCOMPARE(selectedTiles(*m_form).isEmpty(), !on);
        QCOMPARE(m_settings->value(settingskeys::kRecordingFormat).toString(), stored);
    }

    void screenOffMakesAVideoFormatMp3AndOnMakesItMp4()
    {
        m_selection->switchScreen(false);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP3"));
        QCOMPARE(selectedTiles(*m_form), QStringList());
        QCOMPARE(m_settings->value(settingskeys::kScreenSwitch).toBool(), false);
        m_selection->switchScreen(true);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP4"));
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
        QCOMPARE(m_settings->value(settingskeys::kScreenSwitch).toBool(), true);
        QCOMPARE(m_settings->value(settingskeys::kRecordingFormat).toString(), QStringLiteral("MP4"));
    }

    void modeStaysWhileTheScreenIsSwitchedOff()
    {
        m_selection->choose(CaptureMode::Region);
        m_selection->switchScreen(false);
        QCOMPARE(selectedTiles(*m_form), QStringList());
        QCOMPARE(m_selection->mode(), CaptureMode::Region);
        m_selection->switchScreen(true);
        QCOMPARE(m_selection->mode(), CaptureMode::FullScreen);
    }

    void screenSwitchLeavesASuitingFormatAlone()
    {
        m_output->setFormat(5);
        m_selection->switchScreen(false);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("AAC"));
        m_output->showFormat(2);
        m_selection->switchScreen(true);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("FLV"));
    }

    void screenSwitchedOnMakesAnAudioFormatMp4()
    {
        m_output->showFormat(6);
        m_selection->switchScreen(true);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP4"));
    }

    void audioFormatWithTheScreenOnStays()
    {
        m_output->setFormat(6);
        m_selection->choose(CaptureMode::Window);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("FLAC"));
        QCOMPARE(selectedTiles(*m_form), QStringList{"windowTile"});
    }

    void formatWithVideoSwitchesTheScreenOn()
    {
        const QSignalSpy switched(m_selection.get(), &CaptureSelection::screenSwitchedByFormat);
        m_selection->choose(CaptureMode::Region);
        m_selection->switchScreen(false);
        QTest::keyClick(m_ui.formatBox, Qt::Key_Down);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("AAC"));
        QVERIFY(!m_ui.screenSwitch->isChecked());
        QCOMPARE(switched.size(), 0);
        QTest::keyClick(m_ui.formatBox, Qt::Key_Home);
        QCOMPARE(switched.size(), 1);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP4"));
        QVERIFY(m_ui.screenSwitch->isChecked());
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
        QCOMPARE(m_settings->value(settingskeys::kScreenSwitch).toBool(), true);
    }

    void cancelledRegionRestoresWhatWasChosenBefore()
    {
        m_selection->switchScreen(false);
        m_selection->beginRegion();
        QCOMPARE(m_selection->mode(), CaptureMode::Region);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP4"));
        m_selection->cancelRegion();
        QVERIFY(!m_ui.screenSwitch->isChecked());
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("MP3"));
        QCOMPARE(m_settings->value(settingskeys::kScreenSwitch).toBool(), false);
        QCOMPARE(selectedTiles(*m_form), QStringList());
    }

    /// The window can be reached beside a selector on another screen.
    void formatChosenWhileARegionIsSelectedStays()
    {
        m_selection->choose(CaptureMode::Region);
        m_selection->switchScreen(false);
        m_selection->beginRegion();
        QTest::keyClick(m_ui.formatBox, Qt::Key_Down);
        const QSignalSpy switched(m_selection.get(), &CaptureSelection::screenSwitchedByFormat);
        m_selection->cancelRegion();
        QCOMPARE(switched.size(), 1);
        QCOMPARE(m_ui.formatBox->currentText(), QStringLiteral("AVI"));
        QVERIFY(m_ui.screenSwitch->isChecked());
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
    }

private:
    std::unique_ptr<QSettings> m_settings = openSettings();
    Activity m_activity{{[] { return RecordingState::Idle; }, {}, {}, {}, {}, {}, {}}};
    std::unique_ptr<QMainWindow> m_form;
    Ui::SCMainWindow m_ui{};
    std::unique_ptr<OutputOptions> m_output;
    std::unique_ptr<CaptureSelection> m_selection;
};

REGISTER_TEST(windowtest::run<TestCaptureSelection>);

#include "test_captureselection.moc"
