// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audiodevices.h"
#include "engine/capture/captureplatform.h"
#include "engine/capture/capturescene.h"
#include "engine/capture/capturesource.h"
#include "engine/capture/directcapture.h"
#include "engine/core/enginetimings.h"
#include "engine/core/enginevideo.h"
#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"
#include "engine/output/fileoutput.h"
#include "engine/output/stopreason.h"
#include "engine/ports.h"

#include <QObject>
#include <QSize>
#include <QStringList>

/// The facade of libobs: starts the engine, holds scene and sources, reports audio levels, records to files. Create it
/// once and keep it for the life of the process; the engine is never shut down. User-interface thread unless said
/// otherwise; sizes are physical pixels. Nothing throws.
class ObsWrapper : public QObject, public RecorderPort, public SourcePort
{
    Q_OBJECT

public:
    /// Any other capture type means one window.
    static constexpr int kCaptureMonitor = 1;

    static constexpr int kLevelChannels = AudioLevels::kChannels;

    explicit ObsWrapper(CapturePlatform platform = CapturePlatform::current(),
                        const EngineTimings& timings = EngineTimings());
    ~ObsWrapper() override;

    /// Starts the engine and puts the default audio devices with their meters on channels 1 (desktop) and 2
    /// (microphone). On a running engine only outputs, audio sources and meters are made again.
    /// @return false when the engine cannot be used; the critical log says why. Modules that fail are logged only
    bool initialize(int width, int height, int fps);
    bool isReady() const override { return m_ready; }

    /// The captured frame is stretched over the whole output. Where the desktop is captured without the scene, nobody
    /// sees libobs' own video, and that is made as small as can be.
    /// @return 0, or libobs' negative code and nothing changed: a recording runs, or the last one's output is busy with
    ///         its file
    int resetVideo(int srcWidth, int srcHeight, int outputWidth, int outputHeight, int fps);

    /// The width and the height of a video are multiples of these. Needs a started engine.
    QSize videoSteps() const;

    /// Whether a recording can show several screens, by margins of setCaptureTarget() that are negative. Else it shows
    /// the target alone.
    bool canSpanScreens() const { return m_direct.works(); }

    /// Builds transition, scene and capture source and clears channels 1 and 2; setMicDevice() and
    /// setDesktopAudioDevice() put the audio back on.
    /// @return 0; -1 no fade transition; -2 no scene; -3 no capture source
    int setupScene(int captureType);

    /// Selects an entry of captureTargetNames(), from the source's next update on (for instance setCaptureCursor()),
    /// and crops by margins. `cropped` is not used.
    /// @return false, and nothing changed, for an unknown target or without a capture source
    bool setCaptureTarget(const char* target, int captureType, bool cropped, int left, int right, int top, int bottom);

    /// Renders the scene, as from setupScene() on and needed by setupFFmpeg(), at the cost of most of a processor
    /// without a graphics card. Switching it on waits until the scene shows the present screen (EngineTimings);
    /// switching it off is refused during a recording, whose video would go black. Never switched on where the desktop
    /// is captured without the scene: switching it off slows libobs' own video down there, until a recording is
    /// prepared.
    void setSceneRendered(bool rendered);
    bool isSceneRendered() const { return m_scene.isRendered(); }

    /// Windows or monitors, into captureTargetNames() and captureTargetValues().
    void refreshCaptureTargets(bool window) { m_capture.refreshTargets(window); }

    void setCaptureCursor(bool show) override;

    /// Highlights the pointer of a captured monitor and marks its clicks, in the recording only.
    void setCursorEffects(bool show) override;

    /// Puts a device on its channel, or takes it off: its levels then become zero, signalled once. Ignored when the
    /// system has no list of such devices, until it has one. What vanishes is silent until it is back.
    void setMicDevice(bool enabled, const QString& deviceId) override { m_audio.setMicrophone(enabled, deviceId); }
    void setDesktopAudioDevice(bool enabled, const QString& deviceId) override
    {
        m_audio.setDesktop(enabled, deviceId);
    }

    /// An empty list becomes "No Device" and "default". Without its sound server the last list stays.
    void refreshMicDevices() override { m_audio.refreshDevices(m_audio.microphone()); }
    void refreshDesktopDevices() override { m_audio.refreshDevices(m_audio.desktop()); }

    const QStringList& captureTargetNames() const { return m_capture.targetNames(); }
    const QStringList& captureTargetValues() const { return m_capture.targetValues(); }
    const QStringList& micDeviceNames() const override { return m_audio.microphone().names(); }
    const QStringList& micDeviceIds() const override { return m_audio.microphone().ids(); }
    const QStringList& desktopDeviceNames() const override { return m_audio.desktop().names(); }
    const QStringList& desktopDeviceIds() const override { return m_audio.desktop().ids(); }

    /// Replaces the file output and its audio encoders.
    bool createOutputMode() { return m_fileOutput.create(); }

    /// Prepares one recording and waits for the engine's first frame (EngineTimings). The engine is active from then
    /// on: start soon.
    /// @param storePath without extension
    /// @param bitRate the encoder is given 1024 times it
    /// @param format position in the list of formats; any other value is MP4
    void setupFFmpeg(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format) override
    {
        m_fileOutput.setUp(storePath, srcWidth, srcHeight, fps, bitRate, format);
    }

    /// Starts the prepared recording after status 0. From a slot that status 2 calls directly: -1 without a further
    /// signal.
    /// @return 0 when the output started, which may still end by itself with status 2; -1, after status 2, when not
    int startRecording() override { return m_fileOutput.start(); }

    /// Stops the output, at once when forced. Returns 0; the file is closed then, unless the output ended by itself and
    /// is still closing it. One that is still opening its file is cancelled, and stopReason() says so. Drops what
    /// encoder and disk have not taken: first requestRecordingEnd() and isRecordingEndReached() to keep the end
    /// (docs/stopping.md).
    int stopRecording(bool force) override { return m_fileOutput.stop(force); }

    /// Any thread.
    bool isRecording() const override { return m_fileOutput.isRecording(); }

    /// Audio and video together, after one or two frames; right after another call it waits up to some tenths of a
    /// second. Sends no status (docs/pausing.md).
    /// @return false, and nothing changed, when no recording runs, its file is still being opened, or the output cannot
    ///         pause
    bool pauseRecording(bool pause) override { return m_fileOutput.pause(pause); }
    /// Any thread.
    bool isRecordingPaused() const override { return m_fileOutput.isPaused(); }
    bool canPauseRecording() const override { return m_fileOutput.canPause(); }

    /// Takes the present moment as the end; only the first call counts. A paused recording resumes for a few frames,
    /// which its encoder needs to return what it buffers.
    void requestRecordingEnd() override { m_fileOutput.requestEnd(); }

    /// Whether all up to the requested end is encoded and written, or nothing records; false while the file is being
    /// opened. Ask every few milliseconds, then call stopRecording(): a stream that has reached the end is blocked. A
    /// stalled engine never gets there.
    bool isRecordingEndReached() override { return m_fileOutput.isEndReached(); }

    /// Where the desktop is captured without the scene.
    bool leavesOutOwnWindows() const override { return m_direct.isUsed(); }

    /// Of the last setupFFmpeg().
    int encoderDelayFrames() const { return m_fileOutput.encoderDelayFrames(); }

    /// Handed to the encoder by the present or the last recording.
    quint64 recordedFrames() const { return m_fileOutput.recordedFrames(); }

    /// Any thread; set before status 2 is signalled.
    StopReason stopReason() const { return m_fileOutput.stopReason(); }
    QString stopReasonText() const override;
    StopCause stopCause() const override { return causeOf(stopReason()); }

    /// 0 before initialize().
    int micMeterChannels() const { return m_audio.microphone().meterChannels(); }
    int desktopMeterChannels() const { return m_audio.desktop().meterChannels(); }
    int audioOutputChannels() const;

signals:
    /// In dB; arrays of kLevelChannels floats of this object: copy during the call. Every 16 ms (EngineTimings), and
    /// once with zeros when the device is switched off.
    void micVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);
    void playerVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);

    /// recordstatus::kStarted when a start was requested, kEnded when the recording ended or failed to start. Also from
    /// threads of libobs: connect queued.
    void recordStatusChanged(int recordingStatus);

    /// Of what is switched on; see AudioDevices.
    void audioLost(AudioPart part);
    void audioReturned(AudioPart part);
    void audioFellBack(AudioPart part);
    void audioReturnedToChosen(AudioPart part);

private:
    bool startEngine(int width, int height, int fps);
    void videoWasReset();
    void fitVideo(EngineVideo::Need directNeed);
    void renderSceneAsNeeded();
    std::shared_ptr<ScreenVideo> openVideo(QSize& size, int fps, bool showsScreen);
    void fitVideoToScene(QSize& size, int fps);

    const CapturePlatform m_platform;
    const EngineTimings m_timings;
    bool m_ready = false;         ///< initialize() has succeeded
    bool m_isSceneWanted = false; ///< to be rendered unless something takes its place

    /// Released in reverse; the destructor releases meters and encoders first.
    OutputChannels m_channels;
    AudioDevices m_audio{m_platform, m_channels, m_timings};
    CaptureSource m_capture{m_platform};
    DirectCapture m_direct{m_platform};
    EngineVideo m_engineVideo{m_platform};
    FileOutput m_fileOutput{
        m_timings, [this](QSize& size, int fps, bool showsScreen) { return openVideo(size, fps, showsScreen); }};
    CaptureScene m_scene{m_capture, m_channels, m_platform, m_timings};
    ObsDisplayHandle m_display;
};
