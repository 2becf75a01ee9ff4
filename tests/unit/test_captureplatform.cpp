// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/captureplatform.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <algorithm>

namespace {

QStringList moduleNames(const CapturePlatform& platform)
{
    QStringList names;
    for (const char* name : platform.neededModules)
        names << QLatin1String(name);
    return names;
}

bool needs(const CapturePlatform& platform, NeededType::Registry registry, const char* id)
{
    return std::any_of(platform.neededTypes.begin(), platform.neededTypes.end(), [&](const NeededType& type) {
        return type.registry == registry && qstrcmp(type.id, id) == 0 && qstrlen(type.consequence) > 0;
    });
}

} // namespace

class TestCapturePlatform : public QObject
{
    Q_OBJECT

private slots:
    void windowsRow()
    {
        const CapturePlatform platform = CapturePlatform::windows();
        QCOMPARE(platform.graphicsModule, "libobs-d3d11.dll");
        QCOMPARE(platform.moduleLoading, ModuleLoading::All);
        QCOMPARE(platform.monitor.sourceId, "monitor_capture");
        QCOMPARE(platform.monitor.sourceName, "Computer_Monitor_Capture");
        QCOMPARE(platform.monitor.targets.key, "monitor_id");
        QCOMPARE(platform.monitor.targets.kind, ListKind::Text);
        QCOMPARE(platform.monitor.methodKey, "method");
        QCOMPARE(platform.monitor.method, 1);
        QVERIFY(!platform.monitor.selectedByName);
        QCOMPARE(platform.window.sourceId, "window_capture");
        QCOMPARE(platform.window.sourceName, "Window_Capture");
        QCOMPARE(platform.window.targets.key, "window");
        QVERIFY(platform.window.selectedByName);
        QCOMPARE(platform.cursorKey, "capture_cursor");
        QCOMPARE(platform.desktopAudioId, "wasapi_output_capture");
        QCOMPARE(platform.microphoneId, "wasapi_input_capture");
    }

    void windowsOlderMonitorCaptureListsIntegers()
    {
        const PropertyList second = CapturePlatform::windows().monitor.secondChoice;
        QCOMPARE(second.key, "monitor");
        QCOMPARE(second.kind, ListKind::Integer);
    }

    void x11Row()
    {
        const CapturePlatform platform = CapturePlatform::x11();
        QVERIFY(QByteArray(platform.graphicsModule).startsWith("libobs-opengl"));
        QCOMPARE(platform.moduleLoading, ModuleLoading::OwnFolderOnly);
        QCOMPARE(platform.monitor.sourceId, "xshm_input");
        QCOMPARE(platform.monitor.sourceName, "Computer_Monitor_Capture");
        QCOMPARE(platform.monitor.targets.key, "screen");
        QCOMPARE(platform.monitor.targets.kind, ListKind::Integer);
        QCOMPARE(platform.monitor.secondChoice.key, static_cast<const char*>(nullptr));
        QCOMPARE(platform.monitor.methodKey, static_cast<const char*>(nullptr));
        QCOMPARE(platform.window.sourceId, "xcomposite_input");
        QCOMPARE(platform.window.targets.key, "capture_window");
        QVERIFY(!platform.window.selectedByName);
        QCOMPARE(platform.cursorKey, "show_cursor");
        QCOMPARE(platform.desktopAudioId, "pulse_output_capture");
        QCOMPARE(platform.microphoneId, "pulse_input_capture");
    }

    void windowsIsGivenMoreTimeForItsFirstFrame()
    {
        // On X11 the very next frame is captured as it is drawn.
        QCOMPARE(CapturePlatform::x11().framesUntilDrawn, 2);
        QVERIFY(CapturePlatform::windows().framesUntilDrawn > 2);
    }

    void neededModules()
    {
        QCOMPARE(moduleNames(CapturePlatform::windows()),
                 (QStringList{"obs-ffmpeg", "obs-filters", "obs-transitions", "win-capture", "win-wasapi"}));
        QCOMPARE(moduleNames(CapturePlatform::x11()),
                 (QStringList{"obs-ffmpeg", "obs-filters", "obs-transitions", "linux-capture", "linux-pulseaudio"}));
    }

    void everyNeededTypeSaysWhatWillNotWork()
    {
        using Registry = NeededType::Registry;
        for (const CapturePlatform& platform : {CapturePlatform::windows(), CapturePlatform::x11()}) {
            QVERIFY(needs(platform, Registry::Source, "fade_transition"));
            QVERIFY(needs(platform, Registry::Source, "crop_filter"));
            QVERIFY(needs(platform, Registry::Source, platform.monitor.sourceId));
            QVERIFY(needs(platform, Registry::Source, platform.window.sourceId));
            QVERIFY(needs(platform, Registry::Source, platform.desktopAudioId));
            QVERIFY(needs(platform, Registry::Source, platform.microphoneId));
            QVERIFY(needs(platform, Registry::Output, "ffmpeg_output"));
            QVERIFY(needs(platform, Registry::Encoder, "ffmpeg_aac"));
        }
    }

    void currentIsThisSystemsRow()
    {
        const CapturePlatform expected =
            QSysInfo::productType() == QLatin1String("windows") ? CapturePlatform::windows() : CapturePlatform::x11();
        QCOMPARE(CapturePlatform::current().graphicsModule, expected.graphicsModule);
    }
};

REGISTER_TEST(testrun::core<TestCapturePlatform>);
#include "test_captureplatform.moc"
