// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "engine/audio/audioserver.h"
#include "engine/ports.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/sourceswitches.h"
#include "overlays/scswitchwidget.h"
#include "tests/support/widgetimage.h"
#include "tests/support/windowtest.h"
#include "widgets/messagebox.h"
#include "widgets/volumecontrol.h"

#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <array>
#include <memory>

namespace {

class FakeSources : public SourcePort
{
public:
    void setDesktopAudioDevice(bool enabled, const QString& deviceId) override { note("speaker", enabled, deviceId); }
    void setMicDevice(bool enabled, const QString& deviceId) override { note("microphone", enabled, deviceId); }
    void refreshMicDevices() override
    {
        names = QStringList{"The default", "Desk & wall", "Headset"}.first(microphones);
        ids = QStringList{"default", "mic-1", "mic-2"}.first(microphones);
    }
    const QStringList& micDeviceNames() const override { return names; }
    const QStringList& micDeviceIds() const override { return ids; }
    void refreshDesktopDevices() override {}
    const QStringList& desktopDeviceNames() const override { return speakerNames; }
    const QStringList& desktopDeviceIds() const override { return speakerIds; }
    void setCaptureCursor(bool show) override { calls << QStringLiteral("pointer %1").arg(int(show)); }

    QStringList calls;
    int microphones = 2;
    QStringList speakerNames{"The default", "Headphones"};
    QStringList speakerIds{"default", "out-1"};

private:
    /// The default device goes without saying.
    void note(const char* device, bool enabled, const QString& deviceId)
    {
        const QString named = enabled && deviceId != kDefaultAudioDevice ? QLatin1Char(' ') + deviceId : QString();
        calls << QStringLiteral("%1 %2%3").arg(QLatin1String(device)).arg(int(enabled)).arg(named);
    }

    QStringList names;
    QStringList ids;
};

/// What a menu says of its entries: "*" the checked one, "-" one that cannot be chosen.
QStringList texts(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* const entry : menu.actions())
        texts << QLatin1String(entry->isChecked() ? "*" : "") + QLatin1String(entry->isEnabled() ? "" : "-") +
                     entry->text();
    return texts;
}

using Levels = std::array<float, VolumeControl::kMaxChannels>;

} // namespace

class TestSourceSwitches : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_settings = openSettings();
        m_settings->clear();
        applyDefaultSettings(*m_settings);
        m_sources = FakeSources();
        m_window = std::make_unique<QWidget>();
        m_speaker = new SCSwitchWidget(m_window.get());
        m_mic = new SCSwitchWidget(m_window.get());
        m_mouse = new SCSwitchWidget(m_window.get());
        m_speakerDevices = new QPushButton(m_window.get());
        m_micDevices = new QPushButton(m_window.get());
        m_micDevices->setAccessibleName(QStringLiteral("Choose Microphone"));
        m_speakerMeter = new VolumeControl(m_window.get());
        m_micMeter = new VolumeControl(m_window.get());
        for (VolumeControl* const meter : {m_speakerMeter, m_micMeter}) {
            meter->resize(100, 12);
            meter->setFillFromMinimum(true);
        }
    }

    void speakerSetsEngineMeterAndSettings()
    {
        auto& switches = make();
        switches.restore();
        m_sources.calls.clear();
        showLevel(*m_speakerMeter);
        m_speaker->setChecked(false);
        QCOMPARE(m_sources.calls, QStringList{"speaker 0"});
        QVERIFY(!isLit(*m_speakerMeter));
        QVERIFY(!m_speakerMeter->isActive());
        QCOMPARE(m_settings->value(settingskeys::kSpeakerSwitch).toBool(), false);
        m_speaker->setChecked(true);
        QCOMPARE(m_sources.calls, (QStringList{"speaker 0", "speaker 1"}));
        QVERIFY(m_speakerMeter->isActive());
        QVERIFY(!isLit(*m_speakerMeter));
        QCOMPARE(m_settings->value(settingskeys::kSpeakerSwitch).toBool(), true);
    }

    void microphoneSetsEngineMeterAndSettings()
    {
        make().restore();
        m_sources.calls.clear();
        m_mic->setChecked(true);
        QCOMPARE(m_sources.calls, QStringList{"microphone 1"});
        QVERIFY(m_micMeter->isActive());
        QCOMPARE(m_settings->value(settingskeys::kMicSwitch).toBool(), true);
        showLevel(*m_micMeter);
        m_mic->setChecked(false);
        QVERIFY(!isLit(*m_micMeter));
        QCOMPARE(m_settings->value(settingskeys::kMicSwitch).toBool(), false);
    }

    void microphoneWithoutADeviceIsWarnedOfAndSwitchedOff()
    {
        make().restore();
        m_sources.microphones = 1;
        const messagebox::Recorder boxes;
        m_mic->setChecked(true);
        expectWarning(boxes, "No microphone device found!");
        QVERIFY(!m_mic->isChecked());
        QCOMPARE(m_settings->value(settingskeys::kMicSwitch).toBool(), false);
    }

    void switchingTheMicrophoneOffNeverWarns()
    {
        m_settings->setValue(settingskeys::kMicSwitch, true);
        make().restore();
        m_sources.microphones = 1;
        const messagebox::Recorder boxes;
        m_mic->setChecked(false);
        QCOMPARE(boxes.calls().size(), std::size_t(0));
    }

    void mouseOffAndOnLeavesPointerAndHighlightOn()
    {
        make().restore();
        m_sources.calls.clear();
        m_mouse->setChecked(false);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor).toBool(), true);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowHighlight).toBool(), false);
        QCOMPARE(m_settings->value(settingskeys::kMouseSwitch).toBool(), false);
        m_mouse->setChecked(true);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor).toBool(), true);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowHighlight).toBool(), true);
        QCOMPARE(m_settings->value(settingskeys::kMouseSwitch).toBool(), true);
        QCOMPARE(m_sources.calls, (QStringList{"pointer 0", "pointer 1"}));
    }

    void mouseOffLeavesAHiddenPointerHidden()
    {
        m_settings->setValue(settingskeys::kMouseShowCursor, false);
        make().restore();
        m_mouse->setChecked(false);
        QCOMPARE(m_settings->value(settingskeys::kMouseShowCursor).toBool(), false);
    }

    void highlightOfTheSettingsReachesTheRecording()
    {
        auto& switches = make();
        m_settings->setValue(settingskeys::kMouseShowHighlight, false);
        switches.applyStored();
        QVERIFY(!m_mouse->isChecked());
        QCOMPARE(m_settings->value(settingskeys::kMouseSwitch).toBool(), false);
        m_settings->setValue(settingskeys::kMouseShowHighlight, true);
        switches.applyStored();
        QVERIFY(m_mouse->isChecked());
        QCOMPARE(m_settings->value(settingskeys::kMouseSwitch).toBool(), true);
    }

    void restoringSetsTheEngineToEveryStateAndStoresNothing()
    {
        m_settings->setValue(settingskeys::kSpeakerSwitch, false);
        m_settings->setValue(settingskeys::kMicSwitch, true);
        auto& switches = make();
        m_sources.microphones = 1;
        const messagebox::Recorder boxes;
        const QMap<QString, QVariant> before = stored();
        switches.restore();
        QCOMPARE(m_sources.calls, (QStringList{"speaker 0", "microphone 1", "pointer 1"}));
        QVERIFY(!m_speaker->isChecked());
        QVERIFY(m_mic->isChecked());
        QVERIFY(m_mouse->isChecked());
        QVERIFY(!m_speakerMeter->isActive());
        QCOMPARE(stored(), before);
        QCOMPARE(boxes.calls().size(), std::size_t(0));
    }

    void chosenMicrophoneIsUsedUntilAnotherOneIsChosen()
    {
        m_settings->setValue(settingskeys::kMicSwitch, true);
        make().restore();
        m_sources.microphones = 3;
        m_sources.calls.clear();
        const QMap<QString, QVariant> before = stored();
        choose(*m_micDevices, 2);
        QCOMPARE(m_sources.calls, QStringList{"microphone 1 mic-2"});
        m_mic->setChecked(false);
        m_mic->setChecked(true);
        QCOMPARE(m_sources.calls.sliced(1), (QStringList{"microphone 0", "microphone 1 mic-2"}));
        QCOMPARE(texts(openMenu(*m_micDevices)), (QStringList{"Default", "Desk && wall", "*Headset"}));
        choose(*m_micDevices, 2);
        QCOMPARE(m_sources.calls.size(), 3);
        choose(*m_micDevices, 0);
        QCOMPARE(m_sources.calls.sliced(3), QStringList{"microphone 1"});
        // The next run begins with the default device.
        QCOMPARE(stored(), before);
    }

    void speakerThatIsChosenWhileOffIsUsedOnceItIsSwitchedOn()
    {
        m_settings->setValue(settingskeys::kSpeakerSwitch, false);
        make().restore();
        m_sources.calls.clear();
        choose(*m_speakerDevices, 1);
        QCOMPARE(m_sources.calls, QStringList{"speaker 0"});
        QVERIFY(!m_speaker->isChecked());
        m_speaker->setChecked(true);
        QCOMPARE(m_sources.calls.sliced(1), QStringList{"speaker 1 out-1"});
    }

    void deviceIsChosenWithTheKeyboard()
    {
        make().restore();
        m_sources.calls.clear();
        m_window->show();
        QTest::keyClick(m_speakerDevices, Qt::Key_Space);
        QMenu* const menu = shownMenu();
        QVERIFY(menu != nullptr);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(m_sources.calls, QStringList{"speaker 1 out-1"});
        QVERIFY(shownMenu() == nullptr);
    }

    void menuOfDevicesIsNamedAndBelowItsButton()
    {
        make();
        const QMenu& menu = openMenu(*m_micDevices);
        QCOMPARE(menu.accessibleName(), QStringLiteral("Choose Microphone"));
        QCOMPARE(menu.pos(), m_micDevices->mapToGlobal(QPoint(0, m_micDevices->height())));
    }

    void chosenDeviceThatIsAwayIsShownAsSuch()
    {
        make();
        choose(*m_micDevices, 1);
        m_sources.microphones = 1;
        QCOMPARE(texts(openMenu(*m_micDevices)), (QStringList{"Default", "*-Desk && wall"}));
    }

    void deviceThatIsReplacedByTheDefaultOneIsReported()
    {
        QStringList notices;
        connect(&m_notices, &Notices::posted, m_window.get(), [&](const Notice& notice) { notices << notice.text; });
        SourceSwitches& switches = make();
        choose(*m_micDevices, 1);
        choose(*m_speakerDevices, 1);
        switches.onAudioFellBack(AudioPart::Microphone);
        QCOMPARE(notices, QStringList{"Desk & wall is gone: the default microphone is used."});
        QCOMPARE(texts(openMenu(*m_micDevices)), (QStringList{"*Default", "Desk && wall"}));
        QCOMPARE(texts(openMenu(*m_speakerDevices)), (QStringList{"Default", "*Headphones"}));
        switches.onAudioFellBack(AudioPart::Desktop);
        QCOMPARE(notices.value(1), QStringLiteral("Headphones is gone: the sound of the default speaker is used."));
        m_sources.calls.clear();
        m_mic->setChecked(true);
        QCOMPARE(m_sources.calls, QStringList{"microphone 1"});
    }

    void replacedDeviceThatIsBackIsTheChosenOneAgain()
    {
        QStringList notices;
        SourceSwitches& switches = make();
        choose(*m_micDevices, 1);
        choose(*m_speakerDevices, 1);
        switches.onAudioFellBack(AudioPart::Microphone);
        switches.onAudioFellBack(AudioPart::Desktop);
        // The default device by choice, which the engine has to know.
        m_sources.calls.clear();
        choose(*m_speakerDevices, 0);
        QCOMPARE(m_sources.calls.size(), 1);
        connect(&m_notices, &Notices::posted, m_window.get(), [&](const Notice& notice) { notices << notice.text; });
        switches.onAudioReturnedToChosen(AudioPart::Microphone);
        QCOMPARE(notices, QStringList{"The microphone is back."});
        QCOMPARE(texts(openMenu(*m_micDevices)), (QStringList{"Default", "*Desk && wall"}));
        switches.onAudioReturnedToChosen(AudioPart::Desktop);
        QCOMPARE(texts(openMenu(*m_speakerDevices)), (QStringList{"*Default", "Headphones"}));
    }

    void audioThatIsLostOrBackIsReported_data()
    {
        QTest::addColumn<AudioPart>("part");
        QTest::addColumn<QString>("lost");
        QTest::addColumn<QString>("returned");
        QTest::newRow("server") << AudioPart::Server
                                << "The sound server does not answer: there is no sound until it is back."
                                << "The sound server is back, and with it the sound.";
        QTest::newRow("microphone") << AudioPart::Microphone
                                    << "There is no microphone: your voice is missing until it is back."
                                    << "The microphone is back.";
        QTest::newRow("speaker") << AudioPart::Desktop
                                 << "There is no speaker: what the computer plays is missing until it is back."
                                 << "The speaker is back.";
    }

    void audioThatIsLostOrBackIsReported()
    {
        QFETCH(const AudioPart, part);
        QStringList texts;
        connect(&m_notices, &Notices::posted, m_window.get(), [&texts](const Notice& notice) { texts << notice.text; });
        SourceSwitches& switches = make();
        switches.onAudioLost(part);
        switches.onAudioReturned(part);
        QTEST(texts.value(0), "lost");
        QTEST(texts.value(1), "returned");
        QCOMPARE(texts.size(), 2);
    }

private:
    SourceSwitches& make()
    {
        const SourceRows rows{*m_speaker,    *m_speakerDevices, *m_speakerMeter, *m_mic,
                              *m_micDevices, *m_micMeter,       *m_mouse};
        return *new SourceSwitches(rows, m_sources, m_notices, *m_settings, m_window.get());
    }

    static QMenu* shownMenu()
    {
        for (QWidget* const widget : QApplication::topLevelWidgets())
            if (auto* const menu = qobject_cast<QMenu*>(widget); menu != nullptr && menu->isVisible())
                return menu;
        return nullptr;
    }

    /// In the place of one that is open.
    static QMenu& openMenu(QPushButton& button)
    {
        if (QMenu* const open = shownMenu())
            open->hide();
        button.click();
        return *shownMenu();
    }

    static void choose(QPushButton& button, int entry) { openMenu(button).actions().at(entry)->trigger(); }

    void expectWarning(const messagebox::Recorder& boxes, const char* text) const
    {
        QCOMPARE(boxes.calls().size(), std::size_t(1));
        const messagebox::Call& box = boxes.calls().front();
        QCOMPARE(box.kind, messagebox::Kind::Warning);
        QCOMPARE(box.title, QStringLiteral("Warning"));
        QCOMPARE(box.text, QLatin1String(text));
        QCOMPARE(box.parent.data(), m_window.get());
    }

    static void showLevel(VolumeControl& meter)
    {
        Levels levels;
        levels.fill(-6.0F);
        meter.setLevels(levels.data(), levels.data(), levels.data());
        QVERIFY(isLit(meter));
    }

    /// The first segment of an empty row is grey.
    static bool isLit(VolumeControl& meter)
    {
        const QColor first = imageOf(meter).pixelColor(1, 6);
        return first.blue() - first.red() > 40;
    }

    QMap<QString, QVariant> stored() const
    {
        QMap<QString, QVariant> values;
        const QStringList keys = m_settings->allKeys();
        for (const QString& key : keys)
            values.insert(key, m_settings->value(key));
        return values;
    }

    std::unique_ptr<QSettings> m_settings;
    FakeSources m_sources;
    Notices m_notices;
    std::unique_ptr<QWidget> m_window;
    SCSwitchWidget* m_speaker = nullptr;
    SCSwitchWidget* m_mic = nullptr;
    SCSwitchWidget* m_mouse = nullptr;
    QPushButton* m_speakerDevices = nullptr;
    QPushButton* m_micDevices = nullptr;
    VolumeControl* m_speakerMeter = nullptr;
    VolumeControl* m_micMeter = nullptr;
};

REGISTER_TEST(windowtest::run<TestSourceSwitches>);

#include "test_sourceswitches.moc"
