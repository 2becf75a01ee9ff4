// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audiodevices.h"
#include "engine/capture/captureplatform.h"
#include "engine/capture/capturescene.h"
#include "engine/capture/capturesource.h"
#include "engine/core/enginetimings.h"
#include "engine/core/obshandles.h"
#include "engine/core/outputchannels.h"
#include "engine/output/fileoutput.h"
#include "engine/output/stopreason.h"
#include "engine/ports.h"

#include <QObject>
#include <QStringList>

/// The one object through which the program drives libobs: it starts the engine, holds the scene with its capture and
/// audio sources, reports the audio levels and records to files.
///
/// Create it once and keep it for the life of the process; the engine itself is never shut down. User-interface thread,
/// unless said otherwise; sizes are physical pixels. Failures are return values; nothing throws.
class ObsWrapper : public QObject, public RecorderPort, public SourcePort
{
    Q_OBJECT

public:
    /// Capture type of a whole monitor; every other value means one window.
    static constexpr int kCaptureMonitor = 1;

    static constexpr int kLevelChannels = AudioLevels::kChannels;

    explicit ObsWrapper(CapturePlatform platform = CapturePlatform::current(),
                        const EngineTimings& timings = EngineTimings());
    ~ObsWrapper() override;

    /// Starts the engine and puts the default audio devices with their meters on channels 1 (desktop) and 2
    /// (microphone). On an engine that runs already only the outputs, the audio sources and the meters are made again.
    ///
    /// @return false when the engine cannot be used; the critical log says why. Modules that fail are logged only.
    bool initialize(int width, int height, int fps);
    /// Whether initialize() has succeeded.
    bool isReady() const override { return m_ready; }

    /// Gives the engine another video size. The captured frame is stretched over the whole output.
    ///
    /// @return libobs' result: 0, or a negative code and nothing changed: while a recording runs, or the output of an
    /// earlier one is still busy with its file
    int resetVideo(int srcWidth, int srcHeight, int outputWidth, int outputHeight, int fps);

    /// Builds transition, scene and capture source and clears channels 1 and 2; setMicDevice() and
    /// setDesktopAudioDevice() put the audio back on.
    ///
    /// @return 0; -1 no fade transition; -2 no scene; -3 the capture source could not be made
    int setupScene(int captureType);

    /// Points the capture source at an entry of captureTargetNames(), from its next update on (for instance
    /// setCaptureCursor()), and crops it by four margins. `cropped` is not used.
    ///
    /// @return false, and nothing changed, when target is not in the list or there is no capture source
    bool setCaptureTarget(const char* target, int captureType, bool cropped, int left, int right, int top, int bottom);

    /// Whether the engine renders the scene, as it does from setupScene() on and has to before setupFFmpeg(). That
    /// costs most of a processor where there is no graphics card. Switching it on waits until the scene shows the
    /// screen as it is now (EngineTimings); switching it off is refused while a recording runs, whose video would go
    /// black.
    void setSceneRendered(bool rendered);
    bool isSceneRendered() const { return m_scene.isRendered(); }

    /// Reads the list of windows or of monitors into captureTargetNames() and captureTargetValues().
    void refreshCaptureTargets(bool window) { m_capture.refreshTargets(window); }

    void setCaptureCursor(bool show) override { m_capture.setCursor(show); }

    /// Whether the pointer of a captured monitor gets a highlight and its clicks are marked, in the recording only.
    void setCursorEffects(bool show) override { m_capture.setCursorEffects(show); }

    /// Puts a device on its channel, or with enabled false takes it off: its levels then become zero, signalled once.
    /// Does nothing when the system has no list of such devices. A microphone that vanishes is silent until it comes
    /// back.
    void setMicDevice(bool enabled, const QString& deviceId) override { m_audio.setMicrophone(enabled, deviceId); }
    void setDesktopAudioDevice(bool enabled, const QString& deviceId) override
    {
        m_audio.setDesktop(enabled, deviceId);
    }

    /// Read the lists of devices; where there are none, the lists hold exactly "No Device" and "default".
    void refreshMicDevices() override { m_audio.microphone().refreshDevices(); }
    void refreshDesktopDevices() { m_audio.desktop().refreshDevices(); }

    const QStringList& captureTargetNames() const { return m_capture.targetNames(); }
    const QStringList& captureTargetValues() const { return m_capture.targetValues(); }
    const QStringList& micDeviceNames() const override { return m_audio.microphone().names(); }
    const QStringList& micDeviceIds() const { return m_audio.microphone().ids(); }
    const QStringList& desktopDeviceNames() const { return m_audio.desktop().names(); }
    const QStringList& desktopDeviceIds() const { return m_audio.desktop().ids(); }

    /// Makes a new file output and its audio encoders in place of the previous ones.
    bool createOutputMode() { return m_fileOutput.create(); }

    /// Prepares the output for one recording and waits for the engine's first frame (EngineTimings). The engine is
    /// active from then on: start soon.
    ///
    /// @param storePath target file without extension
    /// @param bitRate of the video; the encoder is given 1024 times it
    /// @param format position in the list of formats; every other value records MP4
    void setupFFmpeg(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format) override
    {
        m_fileOutput.setUp(storePath, srcWidth, srcHeight, fps, bitRate, format);
    }

    /// Starts the prepared recording, after status 0. Not from a slot that status 2 calls directly: that returns -1
    /// without a further signal.
    ///
    /// @return 0 when the output started, though it may still end by itself with status 2; -1, after status 2, when not
    int startRecording() override { return m_fileOutput.start(); }

    /// Stops the output, at once when force is set, and releases it. Returns 0 with the file closed; only one that
    /// ended by itself may still be closing its file. An output that is still opening its file is cancelled: it is
    /// stopped when it has opened it, and stopReason() says so.
    ///
    /// The output drops what its encoder buffers and what the disk has not taken. To keep the end, call
    /// requestRecordingEnd() first, and this when isRecordingEndReached().
    int stopRecording(bool force) override { return m_fileOutput.stop(force); }

    /// Any thread.
    bool isRecording() const override { return m_fileOutput.isRecording(); }

    /// Pauses the running recording, or resumes it, audio and video together. Either takes effect after one or two
    /// frames; one that comes right after another waits for that, some tenths of a second at most. Sends no status.
    ///
    /// @return false, and nothing changed, when no recording runs, its file is still being opened, or the output cannot
    /// pause
    bool pauseRecording(bool pause) override { return m_fileOutput.pause(pause); }
    /// Any thread.
    bool isRecordingPaused() const override { return m_fileOutput.isPaused(); }
    bool canPauseRecording() const override { return m_fileOutput.canPause(); }

    /// Takes the present moment as the end of the running recording; only the first call counts. A paused recording
    /// resumes, because its encoder returns what it buffers only for further frames, and ends a few frames later.
    void requestRecordingEnd() override { m_fileOutput.requestEnd(); }

    /// Whether everything captured up to the requested end has been encoded and written, or nothing records. False
    /// while the file is still being opened. Ask every few milliseconds: the first of video and audio to get there is
    /// blocked until the stop. An engine that stalls never gets there; in any case stopRecording() has to follow.
    bool isRecordingEndReached() override { return m_fileOutput.isEndReached(); }

    /// How many frames have to follow a frame before the encoder of the last setupFFmpeg() has returned that one.
    int encoderDelayFrames() const { return m_fileOutput.encoderDelayFrames(); }

    /// Frames that the present recording, or else the last one, has handed to its encoder.
    quint64 recordedFrames() const { return m_fileOutput.recordedFrames(); }

    /// Why the last recording ended. Any thread; set before status 2 is signalled.
    StopReason stopReason() const { return m_fileOutput.stopReason(); }
    QString stopReasonText() const override;

    /// 0 before initialize().
    int micMeterChannels() const { return m_audio.microphone().meter().channels(); }
    int desktopMeterChannels() const { return m_audio.desktop().meter().channels(); }
    int audioOutputChannels() const;

signals:
    /// Audio levels in dB, each an array of kLevelChannels floats that belongs to this object: copy during the call.
    /// Every 16 ms (EngineTimings), and once with zeros when the device is switched off.
    void micVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);
    void playerVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);

    /// recordstatus::kStarted when a start was requested, kEnded when the recording ended or failed to start. Also sent
    /// from threads of libobs: connect so that it is queued.
    void recordStatusChanged(int recordingStatus);

private:
    bool startEngine(int width, int height, int fps);

    const CapturePlatform m_platform;
    const EngineTimings m_timings;
    bool m_ready = false;

    // Released in the reverse order; the destructor releases meters and encoders first.
    OutputChannels m_channels;
    AudioDevices m_audio{m_platform, m_channels, m_timings};
    CaptureSource m_capture{m_platform};
    FileOutput m_fileOutput{m_timings};
    CaptureScene m_scene{m_capture, m_channels, m_platform, m_timings};
    ObsDisplayHandle m_display;
};
