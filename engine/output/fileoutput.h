// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/enginetimings.h"
#include "engine/core/obshandles.h"
#include "engine/output/audioencoders.h"
#include "engine/output/callbackgate.h"
#include "engine/output/diskdrain.h"
#include "engine/output/outputpause.h"
#include "engine/output/recordingformat.h"
#include "engine/output/retiredoutputs.h"
#include "engine/output/stopreason.h"
#include "engine/output/streamtap.h"

#include <QMutex>
#include <QObject>
#include <QSize>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class ScreenVideo;

/// Opens the video of a recording that is not the engine's; null where the recording shall have the engine's.
///
/// @param size in physical pixels, as it was asked for; an odd width or height is recorded with one more. Changed where
///        the engine's video has to have another size
/// @param showsScreen else there is audio alone
using OpenVideo = std::function<std::shared_ptr<ScreenVideo>(QSize& size, int fps, bool showsScreen)>;

/// The file output of one recording after the other: set-up, start, pause, drain and stop.
///
/// User-interface thread, unless said otherwise. libobs signals the end of an output on whatever thread it ends on.
class FileOutput : public QObject
{
    Q_OBJECT

public:
    /// @param timings must outlive this object
    FileOutput(const EngineTimings& timings, OpenVideo openVideo);
    ~FileOutput() override;

    /// The functions of ObsWrapper: createOutputMode(), setupFFmpeg(), startRecording(), stopRecording(),
    /// pauseRecording(), canPauseRecording(), requestRecordingEnd() and isRecordingEndReached().
    bool create();
    void setUp(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format);
    int start();
    int stop(bool force);
    bool pause(bool pause);
    bool canPause() const;
    void requestEnd();
    bool isEndReached();

    /// Whether a recording is prepared or runs.
    bool isPrepared() const { return m_video || m_tap.isConnected(); }

    /// Any thread.
    bool isRecording() const { return m_recording && m_endOwed; }
    bool isPaused() const { return m_paused; }
    StopReason stopReason() const;

    int encoderDelayFrames() const { return m_encoderDelayFrames; }
    /// Frames that the present recording, or else the last one, has handed to its encoder.
    quint64 recordedFrames() const;

    /// Comes before every reset of libobs' video, and videoWasReset() after it.
    ///
    /// @return false when an output may still use the video
    bool prepareVideoReset();
    void videoWasReset();

    /// Ends a recording that runs, for nobody to hear of. The output is released with RetiredOutputs.
    void shutDown();
    /// Cuts the connection to the output and releases its encoders, before the output itself.
    void releaseEncoders();

signals:
    /// A number of recordstatus. Also sent from threads of libobs.
    void statusChanged(int status);

private:
    void openVideo(QSize& size, int fps);
    void attachEngine();
    void connectTap();
    int failToStart();
    void connectStopHandler();
    void dropStopHandler();
    void end(bool force);
    void stopNow(obs_output_t* output, bool force);
    void cancelStart(ObsOutputHandle output);
    void retire(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video);
    bool isStarting() const;
    bool hasEndedByItself() const { return m_endedByItselfNs != 0; }
    static void onStopped(void* self, calldata_t* stopSignal);
    static void onStoppedEarly(void* self, calldata_t* stopSignal);
    void noteStop(calldata_t* stopSignal);
    void disconnectIdleTap();
    void queueRelease();
    void releaseEnded();
    void retireWithVideo();
    void reportEnd();
    void setStopReason(const StopReason& reason);

    const EngineTimings& m_timings;
    const OpenVideo m_openVideo;
    RecordingFormat m_format = RecordingFormat::Mp4;
    int m_encoderDelayFrames = 0;
    quint64 m_recordedFrames = 0;
    /// Null while recordings have the engine's. Outlives the tap and the outputs that are connected to it.
    std::shared_ptr<ScreenVideo> m_video;
    StreamTap m_tap{m_timings.resumeLimit};
    OutputPause m_pause{m_tap, m_timings};
    DiskDrain m_diskDrain;

    // What the stop handlers use on libobs' threads outlasts their connections, which are below.
    std::atomic<bool> m_recording{false};
    std::atomic<bool> m_paused{false};
    /// A started recording whose end has not been reported yet: what makes that come exactly once.
    std::atomic<bool> m_endOwed{false};
    std::atomic<bool> m_stoppedEarly{false};
    /// The end is being reported from inside a call on this object's own thread.
    bool m_reportingOnOwnThread = false;
    /// When the output ended by itself, on libobs' clock; 0 when it did not.
    std::atomic<std::uint64_t> m_endedByItselfNs{0};
    /// Guards m_stopConnection, which the stop handler empties, and m_stopReason.
    mutable QMutex m_endMutex;
    StopReason m_stopReason;
    CallbackGate m_stopHandlers;

    // Released in the reverse order.
    RetiredOutputs m_retired{m_tap, m_timings.release};
    ObsOutputHandle m_output;
    AudioEncoders m_encoders;
    ObsSignalConnection m_stopConnection;
    std::array<ObsSignalConnection, 6> m_furtherConnections;
};
