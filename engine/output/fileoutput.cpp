// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/fileoutput.h"

#include "engine/capture/screenvideo.h"
#include "engine/core/enginecore.h"
#include "engine/core/waituntil.h"
#include "engine/output/encoderdelay.h"
#include "engine/output/ffmpegsettings.h"
#include "engine/output/hybridmp4.h"
#include "engine/ports.h"

#include <QDebug>
#include <QMutexLocker>
#include <QThread>

#include <util/platform.h>
#include <utility>

#include <algorithm>

namespace {

constexpr char kStopSignal[] = "stop";
/// The mixer that is recorded.
constexpr size_t kRecordedMixer = 1;
/// From an output that is inactive to its "stop" signal, at most.
constexpr std::chrono::milliseconds kEndSignalLimit{50};
/// The longest block that one of the audio encoders collects (FLAC: 4608 samples of 48000 a second), twice: one block
/// to fill, one that the encoder buffers.
constexpr std::int64_t kAudioDelayNs = 192'000'000;
/// What libx264 returns, about, beyond the frames that are waited for: the audio lasts as long.
constexpr std::int64_t kH264LeadNs = 80'000'000;

/// The debug message of setUp() has three names only; its text is given.
const char* diagnosticFormatName(int format)
{
    switch (format) {
    case static_cast<int>(RecordingFormat::Mp4):
        return "MP4";
    case static_cast<int>(RecordingFormat::Aac):
        return "AAC";
    default:
        return "MP3";
    }
}

StopReason reasonFrom(calldata_t* stopSignal)
{
    long long code = OBS_OUTPUT_SUCCESS;
    const char* text = nullptr;
    calldata_get_int(stopSignal, "code", &code);
    calldata_get_string(stopSignal, "last_error", &text);
    return {static_cast<int>(code), QString::fromUtf8(text)};
}

} // namespace

FileOutput::FileOutput(const EngineTimings& timings, OpenVideo openVideo)
    : m_timings(timings), m_openVideo(std::move(openVideo))
{}

FileOutput::~FileOutput() = default;

bool FileOutput::create()
{
    qDebug() << "Creating output mode...";
    qDebug() << "Creating ffmpeg_output...";
    if (m_output && m_recording)
        end(false);
    retire(std::move(m_output), m_video);
    m_retired.releaseDue();
    if (enginecore::hasVideo())
        m_output.reset(obs_output_create("ffmpeg_output", "adv_ffmpeg_output", nullptr, nullptr));
    if (!m_output) {
        qDebug() << "Failed to create ffmpeg_output!";
        return false;
    }
    qDebug() << "ffmpeg_output created successfully";
    if (!m_encoders.create())
        return false;
    qDebug() << "Output mode created successfully";
    return true;
}

void FileOutput::setUp(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format)
{
    qDebug() << "Setting up FFmpeg...";
    create();
    if (!m_output) {
        qDebug() << "Error: fileOutput is null!";
        return;
    }
    m_encoders.setAudio(obs_get_audio());
    qDebug().noquote().nospace() << "set up ffpmeg with storePath:[" << storePath << "] srcWidth:[" << srcWidth
                                 << "] srcHeight:[" << srcHeight << "] fps:[" << fps << "] bitRate:[" << bitRate
                                 << "] format:[" << diagnosticFormatName(format) << "]";
    m_format = recordingFormatFromIndex(format);
    QSize size(srcWidth, srcHeight);
    openVideo(size, fps);
    const FfmpegRequest request{storePath, evenSize(size.width()), evenSize(size.height()), fps,
                                bitRate,   writesHybridMp4()};
    m_encoderDelayFrames = encoderDelay(m_format, request.heightPx);
    const ObsDataHandle settings = buildFfmpegSettings(m_format, request);
    qDebug().noquote() << QStringLiteral("Output file path (%1):").arg(recordingFileExtension(m_format).toUpper())
                       << recordingUrl(storePath, m_format);
    qDebug() << "Setting mixer and media...";
    obs_output_set_mixer(m_output.get(), kRecordedMixer);
    attachEngine();
    obs_output_update(m_output.get(), settings.get());
    qDebug() << "FFmpeg setup completed";
    connectTap();
}

void FileOutput::openVideo(QSize& size, int fps)
{
    m_tap.disconnect();
    m_video.reset();
    m_video = m_openVideo(size, fps, hasVideo(m_format));
}

void FileOutput::attachEngine()
{
    video_t* const video = m_video ? m_video->video() : obs_get_video();
    obs_output_set_media(m_output.get(), video, obs_get_audio());
    const video_scale_info conversion = videoConversionFor(m_format, video);
    obs_output_set_video_conversion(m_output.get(), &conversion);
}

/// An idle engine needs some tenths of a second for its first frame. Here they are no part of the recording.
void FileOutput::connectTap()
{
    m_tap.connect(kRecordedMixer, m_video ? m_video->video() : nullptr);
    m_tap.waitForFrame(m_timings.firstFrameLimit);
}

bool FileOutput::prepareVideoReset()
{
    if (m_retired.waitWhileEnding())
        return false;
    // A recording that ended by itself may have left the tap behind; libobs counts it as activity.
    disconnectIdleTap();
    // libobs itself refuses while its own video is recorded.
    return !m_video || !isRecording();
}

void FileOutput::videoWasReset()
{
    if (m_output)
        attachEngine();
}

int FileOutput::start()
{
    if (m_reportingOnOwnThread) {
        qWarning() << "A recording cannot start before the end of the last one has been signalled to everybody";
        return -1;
    }
    // A handler of the previous recording may still be running.
    m_stopHandlers.waitUntilEmpty();
    m_endOwed = true;
    m_stoppedEarly = false;
    m_endedByItselfNs = 0;
    m_diskDrain.reset();
    setStopReason({});
    emit statusChanged(recordstatus::kStarted);
    qDebug() << "Starting recording...";
    if (!m_output)
        return failToStart();

    // A reset of the video has disconnected it, or the end of the last recording, which was reported late.
    if (!m_tap.isConnected())
        connectTap();
    // The output runs on threads of its own and may fail before obs_output_start() has even returned.
    ObsSignalConnection early =
        connectSignal(obs_output_get_signal_handler(m_output.get()), kStopSignal, &onStoppedEarly, this);
    if (!obs_output_start(m_output.get()))
        return failToStart();
    qDebug() << "Recording started successfully";
    m_recording = true;
    m_paused = false;
    m_pause.reset();
    connectStopHandler();
    early.reset();
    if (m_stoppedEarly)
        reportEnd();
    return 0;
}

void FileOutput::connectStopHandler()
{
    dropStopHandler();
    // Connected without the lock: libobs calls handlers while it holds the signal's own, and they take this one.
    ObsSignalConnection connection =
        connectSignal(obs_output_get_signal_handler(m_output.get()), kStopSignal, &onStopped, this);
    {
        const QMutexLocker locker(&m_endMutex);
        m_stopConnection = std::move(connection);
    }
    // Ended in between: the handler found nothing to cut.
    if (!m_endOwed)
        dropStopHandler();
}

void FileOutput::dropStopHandler()
{
    ObsSignalConnection connection;
    {
        const QMutexLocker locker(&m_endMutex);
        connection = std::move(m_stopConnection);
    }
    connection.reset();
}

int FileOutput::failToStart()
{
    m_tap.disconnect();
    const char* text = m_output ? obs_output_get_last_error(m_output.get()) : nullptr;
    qDebug() << "Failed to start recording. Error:" << (text ? text : "No error message");
    // An output that ended while it was being started has said more precisely why.
    if (m_endOwed && stopReason().code == OBS_OUTPUT_SUCCESS)
        setStopReason({OBS_OUTPUT_ERROR, QString::fromUtf8(text)});
    retireWithVideo();
    if (m_endOwed.exchange(false))
        emit statusChanged(recordstatus::kEnded);
    return -1;
}

void FileOutput::onStoppedEarly(void* self, calldata_t* stopSignal)
{
    auto& output = *static_cast<FileOutput*>(self);
    const CallbackGate::Pass pass(output.m_stopHandlers);
    output.noteStop(stopSignal);
    output.m_stoppedEarly = true;
}

void FileOutput::onStopped(void* self, calldata_t* stopSignal)
{
    auto* output = static_cast<FileOutput*>(self);
    if (!output)
        return;
    const CallbackGate::Pass pass(output->m_stopHandlers);
    output->noteStop(stopSignal);
    output->reportEnd();
}

void FileOutput::noteStop(calldata_t* stopSignal)
{
    if (m_endOwed)
        setStopReason(reasonFrom(stopSignal));
    if (QThread::currentThread() == thread())
        return;
    m_endedByItselfNs = os_gettime_ns();
    // The output frees its encoders as soon as this returns. The streams pass it nothing any more, but may still be
    // inside.
    const StreamTap::Quiesce quiesce(m_tap);
}

/// While the tap is connected to the engine's video that counts as active, and every frame is read back for nobody.
void FileOutput::queueRelease()
{
    if (hasEndedByItself())
        QMetaObject::invokeMethod(this, &FileOutput::releaseEnded, Qt::QueuedConnection);
}

void FileOutput::releaseEnded()
{
    disconnectIdleTap();
    // Whoever has heard of the end may have prepared the next recording.
    if (!isRecording() && hasEndedByItself())
        retireWithVideo();
}

/// A video of the program's own holds memory, and a connection to the X server, whose events nobody reads any more.
void FileOutput::retireWithVideo()
{
    if (!m_output || !m_video)
        return;
    m_recordedFrames = recordedFrames();
    retire(std::move(m_output), std::exchange(m_video, nullptr));
}

void FileOutput::disconnectIdleTap()
{
    if (!isRecording())
        m_tap.disconnect();
}

void FileOutput::reportEnd()
{
    if (!m_endOwed.exchange(false))
        return;
    // Before anybody hears of the end.
    queueRelease();
    const bool onOwnThread = QThread::currentThread() == thread();
    if (onOwnThread)
        m_reportingOnOwnThread = true;
    emit statusChanged(recordstatus::kEnded);
    if (onOwnThread)
        m_reportingOnOwnThread = false;
    dropStopHandler();
    m_recording = false;
    m_paused = false;
}

int FileOutput::stop(bool force)
{
    if (m_output)
        end(force);
    m_retired.releaseDue();
    m_tap.disconnect();
    // Whoever has heard of the end may have prepared the next recording.
    if (!m_output)
        m_video.reset();
    m_recording = false;
    m_paused = false;
    return 0;
}

void FileOutput::end(bool force)
{
    // libobs marks an output inactive shortly before it signals its end.
    const bool starting = !waitUntil([this] { return !isStarting(); }, kEndSignalLimit);
    // Whoever hears of the end inside this call and prepares the next recording must not take these away.
    std::shared_ptr<ScreenVideo> video = m_video;
    ObsOutputHandle output = std::move(m_output);
    if (starting) {
        cancelStart(std::move(output));
        return;
    }
    stopNow(output.get(), force);
    m_recordedFrames = static_cast<quint64>(obs_output_get_total_frames(output.get()));
    retire(std::move(output), std::move(video));
}

/// libobs ignores a stop that comes while the output opens its file, and cannot cope with its release then.
void FileOutput::cancelStart(ObsOutputHandle output)
{
    m_retired.addStarting(std::move(output), m_video, m_endedByItselfNs);
    m_recordedFrames = 0;
    if (m_endOwed)
        setStopReason({OBS_OUTPUT_CONNECT_FAILED, QStringLiteral("it took too long")});
    reportEnd();
    m_endedByItselfNs = 0;
}

void FileOutput::stopNow(obs_output_t* output, bool force)
{
    if (hasEndedByItself())
        return;
    const StreamTap::Quiesce quiesce(m_tap);
    // A file that could not be written to its end was abandoned, and the output is closing it on a thread of its
    // own: a stop would have this thread close it as well.
    if (hasEndedByItself())
        return;
    if (force)
        obs_output_force_stop(output);
    else
        obs_output_stop(output);
}

void FileOutput::retire(ObsOutputHandle output, std::shared_ptr<ScreenVideo> video)
{
    const std::uint64_t endedNs = m_endedByItselfNs.exchange(0);
    if (output && endedNs != 0)
        m_retired.addEnded(std::move(output), std::move(video), endedNs);
    else if (output)
        m_retired.add(std::move(output), std::move(video));
}

bool FileOutput::isStarting() const
{
    return m_output && m_recording && !hasEndedByItself() && !obs_output_active(m_output.get());
}

void FileOutput::shutDown()
{
    m_endOwed = false;
    if (m_output && m_recording)
        end(false);
    m_tap.disconnect();
    // The handler empties its own connection, which must not go while one is inside.
    m_stopHandlers.waitUntilEmpty();
    retire(std::move(m_output), m_video);
}

void FileOutput::releaseEncoders()
{
    for (ObsSignalConnection& connection : m_furtherConnections)
        connection.reset();
    m_stopConnection.reset();
    m_encoders.release();
}

bool FileOutput::canPause() const
{
    return m_output && obs_output_can_pause(m_output.get());
}

bool FileOutput::pause(bool pause)
{
    // Before its first frame an output has no moment yet for a pause to begin at.
    if (!isRecording() || !canPause() || recordedFrames() == 0)
        return false;
    if (pause != m_paused) {
        if (!m_pause.set(m_output.get(), pause))
            return false;
        m_paused = pause;
    }
    return true;
}

void FileOutput::requestEnd()
{
    if (m_paused)
        pause(false);
    // What passes before a pause has ended does not reach the encoder.
    m_tap.mark(std::max<std::uint64_t>(os_gettime_ns(), m_pause.effectNs()));
}

bool FileOutput::isEndReached()
{
    if (!isRecording())
        return true;
    // What passes while the file is still being opened does not reach the encoder.
    if (!m_tap.isMarked() || isStarting())
        return false;
    // Frames that passed while the file was still being opened have not reached the encoder.
    const bool video =
        m_tap.framesSinceMark() > m_encoderDelayFrames && recordedFrames() > static_cast<quint64>(m_encoderDelayFrames);
    const bool isH264 = traitsOf(m_format).video.encoderId == codecid::kH264;
    const bool audio = m_tap.audioSinceMarkNs() > kAudioDelayNs + (isH264 ? kH264LeadNs : 0);
    const bool isEncoded = (video || !hasVideo(m_format)) && (audio || !traitsOf(m_format).audio.encoderId);
    if (video || isEncoded)
        m_tap.blockVideo();
    if (audio || isEncoded)
        m_tap.blockAudio();
    if (!isEncoded || !(m_tap.isBlocked() || (m_video && m_video->isFinished())))
        return false;
    if (m_video)
        m_video->finish();
    return m_diskDrain.isOver(obs_output_get_total_bytes(m_output.get()), os_gettime_ns());
}

quint64 FileOutput::recordedFrames() const
{
    return m_output ? static_cast<quint64>(obs_output_get_total_frames(m_output.get())) : m_recordedFrames;
}

void FileOutput::setStopReason(const StopReason& reason)
{
    const QMutexLocker locker(&m_endMutex);
    m_stopReason = reason;
}

StopReason FileOutput::stopReason() const
{
    const QMutexLocker locker(&m_endMutex);
    return m_stopReason;
}
