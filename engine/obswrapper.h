#pragma once

#include "engine/callbackgate.h"
#include "engine/captureplatform.h"
#include "engine/captureprogress.h"
#include "engine/diskdrain.h"
#include "engine/enginetimings.h"
#include "engine/obshandles.h"
#include "engine/ports.h"
#include "engine/recordingend.h"
#include "engine/recordingformat.h"
#include "engine/restingoutputs.h"

#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

/// The one object through which the program drives libobs: it starts the engine, holds the scene with its capture and
/// audio sources, reports the sound levels and records to files.
///
/// Create it once and keep it for the life of the process; the engine itself is never shut down. Everything is called
/// on the user-interface thread unless said otherwise; sizes are physical pixels. Failures are return values; nothing
/// throws.
class ObsWrapper : public QObject, public RecorderPort, public SourcePort
{
    Q_OBJECT

public:
    /// Capture type of a whole monitor; every other value means one window.
    static constexpr int kCaptureMonitor = 1;

    /// Channels of the three level arrays, libobs' maximum.
    static constexpr int kLevelChannels = 8;

    /// @param platform what differs between systems; the table of the running system unless a test says otherwise.
    /// @param timings the program's unless a test says otherwise.
    explicit ObsWrapper(CapturePlatform platform = CapturePlatform::current(),
                        const EngineTimings& timings = EngineTimings());
    ~ObsWrapper() override;

    /// Starts the engine and puts the default audio devices with their meters on channels 1 (desktop) and 2
    /// (microphone). On an engine that runs already only the outputs, the audio sources and the meters are made anew.
    ///
    /// @param width, height size of the picture; @param fps pictures per second
    /// @return false when the engine cannot be used; the critical log says why. Modules that fail to load are logged
    /// only.
    bool initialize(int width, int height, int fps);
    /// Whether initialize() has succeeded.
    bool isReady() const override { return m_ready; }

    /// Gives the engine a new picture size. The captured picture is stretched over the whole output.
    ///
    /// @return libobs' result: 0, or a negative code (the previous layout is then untouched). The engine refuses while
    /// a recording runs, or the output of an earlier one is still busy with its file.
    int resetVideo(int srcWidth, int srcHeight, int outputWidth, int outputHeight, int fps);

    /// Builds transition, scene and capture source and clears channels 1 and 2; setMicDevice() and
    /// setDesktopAudioDevice() put the sound back on.
    ///
    /// @return 0; -1 no fade transition; -2 no scene; -3 the capture source could not be made
    int setupScene(int captureType);

    /// Points the capture source at an entry of captureTargetNames() and crops it by four margins. The entry takes
    /// effect at the source's next update, for instance setCaptureCursor().
    ///
    /// @param cropped whether the margins describe less than the whole target; not used, the margins say it all
    /// @return false, and nothing changed, when target is not in the list or there is no capture source
    bool setCaptureTarget(const char* target, int captureType, bool cropped, int left, int right, int top, int bottom);

    /// Whether the engine renders the scene, as it does from setupScene() on. Rendering it costs most of a processor
    /// where there is no graphics card, and nobody sees it while nothing is recorded; the sound and its levels do not
    /// depend on it.
    ///
    /// Switching it on waits, half a second at most (EngineTimings), until the engine has drawn the screen as it is
    /// now: what the capture source holds from before is old, or nothing. Do so before setupFFmpeg(), whatever the
    /// format. Switching it off is refused while a recording runs, whose picture would go black.
    void setSceneRendered(bool rendered);
    bool isSceneRendered() const;

    /// Reads the capture source's list of windows or of monitors into captureTargetNames() and captureTargetValues().
    void refreshCaptureTargets(bool window);

    /// Whether the pointer is captured.
    void setCaptureCursor(bool show) override;

    /// Whether the pointer of a captured monitor gets a highlight and its clicks are marked, in the recorded picture
    /// only.
    void setCursorEffects(bool show) override;

    /// Puts a device on its channel, or with enabled false takes it off: its levels then become zero, signalled once.
    /// Does nothing when the system has no list of such devices. A microphone that vanishes is silent until it comes
    /// back.
    void setMicDevice(bool enabled, const QString& deviceId) override;
    void setDesktopAudioDevice(bool enabled, const QString& deviceId) override;

    /// Read the lists of devices; where there are none, the lists hold exactly "No Device" and "default".
    void refreshMicDevices() override;
    void refreshDesktopDevices();

    const QStringList& captureTargetNames() const { return m_captureTargetNames; }
    const QStringList& captureTargetValues() const { return m_captureTargetValues; }
    const QStringList& micDeviceNames() const override { return m_micDeviceNames; }
    const QStringList& micDeviceIds() const { return m_micDeviceIds; }
    const QStringList& desktopDeviceNames() const { return m_desktopDeviceNames; }
    const QStringList& desktopDeviceIds() const { return m_desktopDeviceIds; }

    /// Makes a new file output and its audio encoders, releasing the previous ones.
    bool createOutputMode();

    /// Prepares the output for one recording and waits until the engine hands out pictures for it, a second at most. It
    /// goes on doing so until the recording has ended: start it soon.
    ///
    /// @param storePath target file without extension
    /// @param bitRate picture bit rate; the encoder is given 1024 times it
    /// @param format position in the list of formats; every other value records MP4
    void setupFFmpeg(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format) override;

    /// Starts the prepared recording, after status 0.
    ///
    /// Not from a slot that status 2 calls directly: that returns -1 without a further signal. Connect it queued.
    ///
    /// @return 0 when the output started, though it may still end by itself with status 2; -1, after status 2, when not
    int startRecording() override;

    /// Stops the output, at once when force is set, and lets go of it. Returns 0 with the file closed; only one that
    /// ended by itself may still be closing its file. An output that is still opening its file is cancelled: it is
    /// stopped when it has opened it, and endReason() says so.
    ///
    /// The output drops what its encoder buffers and what the disk has not taken. To keep the end, call
    /// requestRecordingEnd() first, and this when isRecordingEndReached().
    int stopRecording(bool force) override;

    /// Whether a recording runs. May be called from any thread.
    bool isRecording() const override { return m_recording && m_endOwed; }

    /// Pauses the running recording, or lets it go on. What happens during a pause is not in the file, which goes on
    /// seamlessly, sound and picture together. Either takes effect after one or two pictures; one that comes right
    /// after another waits for that, some tenths of a second at most. Sends no status.
    ///
    /// @return false, and nothing changed, when no recording runs, its file is still being opened, or the output cannot
    /// pause
    bool pauseRecording(bool pause) override;
    /// Whether a running recording is paused. May be called from any thread.
    bool isRecordingPaused() const override { return m_paused; }
    /// Whether the output that is set up can pause.
    bool canPauseRecording() const override;

    /// Takes the present moment as the end that the running recording shall have. Only the first call of a recording
    /// counts. A paused recording ends at the moment of its pause or a few pictures later: it goes on, so that what its
    /// encoder holds back comes out.
    void requestRecordingEnd() override;

    /// Whether everything captured up to the requested end has been encoded and written, so that a stop loses nothing
    /// of it. True as well when nothing records; false before an end was requested and while the file is still being
    /// opened. Ask every few milliseconds: of video and audio, the one that has got there is blocked from then on, so
    /// that it runs no further into the file than it has to. An engine that stalls never gets there; in any case
    /// stopRecording() has to follow.
    bool isRecordingEndReached() override;

    /// How many frames have to follow a frame before the encoder of the last setupFFmpeg() has returned that one.
    int encoderDelayFrames() const { return m_encoderDelayFrames; }

    /// Pictures that the present recording, or else the last one, has handed to its encoder.
    quint64 recordedFrames() const;

    /// Why the last recording ended. May be called from any thread; set before status 2 is signalled.
    RecordingEnd endReason() const;
    QString endReasonText() const override;

    /// Channels that a meter shows: those of the device on its channel, 0 before initialize().
    int micMeterChannels() const;
    int desktopMeterChannels() const;
    /// Channels of the engine's sound output, 0 before initialize().
    int audioOutputChannels() const;

signals:
    /// Sound levels in dB, each an array of kLevelChannels floats that belongs to this object: copy during the call.
    /// Every 16 ms (EngineTimings), and once with zeros when the device is switched off.
    void micVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);
    void playerVolumeDataChange(const float* magnitude, const float* peak, const float* inputPeak);

    /// recordstatus::kStarted when a start was requested, kEnded when the recording ended or failed to start. Also sent
    /// from threads of libobs: connect so that it is queued.
    void recordStatusChanged(int recordingStatus);

private:
    enum class MeterKind : int
    {
        Microphone = 0,
        Desktop = 1
    };
    struct MeterContext;
    struct AudioDevice;

    struct Levels
    {
        std::array<float, kLevelChannels> magnitude{};
        std::array<float, kLevelChannels> peak{};
        std::array<float, kLevelChannels> inputPeak{};
    };

    bool startEngine(int width, int height, int fps);
    void loadModules();
    void createAudioSources();
    ObsSourceHandle sourceOnChannel(uint32_t channel, const char* typeId, const char* name, const QByteArray& deviceId);
    void createMeters();
    void attachMeters();
    void startLevelTimer();
    void onLevelTick();
    void stretchCaptureOverOutput(int outputWidth, int outputHeight);

    void waitUntilSceneIsDrawn() const;
    bool createTransition();
    bool createScene();
    bool createCaptureSource(int captureType);
    const CaptureSourceKind& captureKind(bool window) const;
    TargetList targetListOf(const CaptureSourceKind& kind) const;
    void selectTarget(bool window, qsizetype index);
    void tellPointerEffects(bool window, const QString& target);
    void updateCrop(int left, int right, int top, int bottom);
    AudioDevice microphone();
    AudioDevice desktopAudio();
    void setAudioDevice(const AudioDevice& device, bool enabled, const QString& deviceId);
    void switchOff(const AudioDevice& device);
    void putOnChannel(const AudioDevice& device, const QByteArray& deviceId);
    void followMicrophone();
    void emitLevels(MeterKind kind);

    bool createTrackEncoders();
    void createMixEncoders();
    void endOutput(bool force);
    void stopOutput(obs_output_t* output, bool force);
    void giveEncodersTheSound();
    void giveOutputTheLines();
    void letPicturesFlow();
    int failToStart();
    void connectStopHandler();
    void dropStopHandler();
    void stopFollowing();
    bool hasEndedByItself() const { return m_endedByItselfNs != 0; }
    void noteStop(calldata_t* stopSignal);
    void endRecording();
    void setRecordingEnd(const RecordingEnd& end);
    bool isOutputStarting() const;
    void waitUntilPauseHasBegun() const;
    bool tellOutputToPause(bool pause);
    void letOutputRest(ObsOutputHandle output);
    void letStartingOutputRest(ObsOutputHandle output);
    static void onOutputStopped(void* wrapper, calldata_t* stopSignal);
    static void onOutputStoppedEarly(void* wrapper, calldata_t* stopSignal);

    /// Takes the sources that this object made off the engine's channels after every handle below was released, and
    /// waits until libobs, on a thread of its own, has done away with them. The engine goes on without this object, and
    /// so would they: on X11 a capture source holds shared memory that outlasts the process. What somebody else has put
    /// on a channel stays.
    struct ReleasedSources
    {
        ~ReleasedSources();
        /// The last source made for each channel. Only to compare with: it may have gone since.
        std::array<const obs_source_t*, 3> made{};
    };

    ReleasedSources m_releasedSources;
    CapturePlatform m_platform;
    const EngineTimings m_timings;
    /// The list that the capture targets were read from last.
    TargetList m_targets;
    bool m_ready = false;
    RecordingFormat m_format = RecordingFormat::Mp4;
    int m_encoderDelayFrames = 0;
    CaptureProgress m_progress{m_timings.resumeLimit};
    DiskDrain m_diskDrain;
    quint64 m_recordedFrames = 0;

    // What the stop handlers use on libobs' threads outlasts their connections, which are among the handles below.
    std::atomic<bool> m_recording{false};
    std::atomic<bool> m_paused{false};
    /// The moment from which the last pause, or the recording after it, runs, on libobs' clock.
    std::uint64_t m_pauseEffectNs = 0;
    /// A started recording whose end has not been signalled yet: what makes status 2 come exactly once.
    std::atomic<bool> m_endOwed{false};
    std::atomic<bool> m_stoppedEarly{false};
    /// Status 2 is being signalled from inside a call on this object's own thread.
    bool m_endingOnOwnThread = false;
    /// When the output ended by itself, on libobs' clock; 0 when it did not.
    std::atomic<std::uint64_t> m_endedByItselfNs{0};
    /// Guards m_outputSignal, which the stop handler empties, and m_recordingEnd.
    mutable QMutex m_endMutex;
    RecordingEnd m_recordingEnd;
    CallbackGate m_stopHandlers;

    // Declared in the order in which they depend on each other and released in the reverse one: the meters before the
    // sources they hang on, the sources after everything that uses them.
    ObsSourceHandle m_micSource;
    ObsSourceHandle m_desktopSource;
    ObsSourceHandle m_videoCapture;
    RestingOutputs m_restingOutputs{m_progress, m_timings.release};
    ObsOutputHandle m_output;
    ObsSourceHandle m_transition;
    ObsSceneHandle m_scene;
    ObsDisplayHandle m_display;
    std::array<ObsEncoderHandle, 6> m_trackEncoders;
    ObsEncoderHandle m_streamAudioEncoder;
    ObsEncoderHandle m_archiveAudioEncoder;
    QTimer m_levelTimer;
    QTimer m_microphoneTimer;
    ObsSignalConnection m_outputSignal;
    std::array<ObsSignalConnection, 6> m_outputSignals;
    ObsFaderHandle m_micFader;
    ObsVolmeterHandle m_micMeter;
    ObsFaderHandle m_desktopFader;
    ObsVolmeterHandle m_desktopMeter;
    QStringList m_captureTargetNames;
    QStringList m_captureTargetValues;
    QStringList m_micDeviceNames;
    QStringList m_micDeviceIds;
    QStringList m_desktopDeviceNames;
    QStringList m_desktopDeviceIds;
    std::shared_ptr<MeterContext> m_micContext;
    std::shared_ptr<MeterContext> m_desktopContext;
    Levels m_micLevels;
    Levels m_desktopLevels;
};
