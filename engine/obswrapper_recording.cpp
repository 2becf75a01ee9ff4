#include "app/sclogger.h"
#include "engine/encoderdelay.h"
#include "engine/ffmpegsettings.h"
#include "engine/obswrapper_p.h"
#include "engine/pictureform.h"
#include "engine/recordstatus.h"
#include "engine/waituntil.h"

#include <QDebug>
#include <QMutexLocker>
#include <QThread>

#include <util/platform.h>
#include <utility>

#include <algorithm>
#include <chrono>

namespace {

constexpr char kStopSignal[] = "stop";
constexpr char kAudioEncoderId[] = "ffmpeg_aac";
/// The mixer whose sound is recorded.
constexpr size_t kRecordedMixer = 1;
constexpr size_t kStreamMixer = 0;
constexpr size_t kArchiveMixer = 1;

/// The longest block that one of the sound encoders collects (FLAC: 4608 samples of 48000 a second), twice: one block
/// to fill, one that the encoder holds back.
constexpr std::int64_t kSoundDelayNs = 192'000'000;
/// Ample for a call of libobs that does nothing but note a moment.
constexpr std::uint64_t kPauseCallNs = 5'000'000;

ObsEncoderHandle createAudioEncoder(const char* name, size_t mixerIndex)
{
    return ObsEncoderHandle(obs_audio_encoder_create(kAudioEncoderId, name, nullptr, mixerIndex, nullptr));
}

/// The diagnostic line of setupFFmpeg() knows three names only.
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

/// An engine that failed to start is there all the same, but has no picture line. libobs does not ask whether there is
/// one.
bool isVideoSetUp()
{
    obs_video_info video{};
    return obs_initialized() && obs_get_video_info(&video);
}

RecordingEnd endFrom(calldata_t* stopSignal)
{
    long long code = OBS_OUTPUT_SUCCESS;
    const char* text = nullptr;
    calldata_get_int(stopSignal, "code", &code);
    calldata_get_string(stopSignal, "last_error", &text);
    return {static_cast<int>(code), QString::fromUtf8(text)};
}

} // namespace

bool ObsWrapper::createOutputMode()
{
    qDebug() << "Creating output mode...";
    qDebug() << "Creating ffmpeg_output...";
    if (m_output && m_recording)
        endOutput(false);
    letOutputRest(std::move(m_output));
    m_restingOutputs.releaseDue();
    m_output.reset(isVideoSetUp() ? obs_output_create("ffmpeg_output", "adv_ffmpeg_output", nullptr, nullptr)
                                  : nullptr);
    if (!m_output) {
        qDebug() << "Failed to create ffmpeg_output!";
        return false;
    }
    qDebug() << "ffmpeg_output created successfully";
    if (!createTrackEncoders())
        return false;
    createMixEncoders();
    qDebug() << "Output mode created successfully";
    return true;
}

bool ObsWrapper::createTrackEncoders()
{
    for (size_t track = 0; track < m_trackEncoders.size(); ++track) {
        const QByteArray name = "adv_aac" + QByteArray::number(static_cast<int>(track));
        m_trackEncoders.at(track) = createAudioEncoder(name.constData(), track);
        if (!m_trackEncoders.at(track)) {
            qDebug() << "Failed to create AAC encoder for track" << track;
            return false;
        }
    }
    return true;
}

void ObsWrapper::createMixEncoders()
{
    m_streamAudioEncoder = createAudioEncoder("adv_stream_audio", kStreamMixer);
    qDebug() << (m_streamAudioEncoder ? "Stream audio encoder created successfully"
                                      : "Failed to create stream audio encoder");
    m_archiveAudioEncoder = createAudioEncoder("adv_archive_audio", kArchiveMixer);
    qDebug() << (m_archiveAudioEncoder ? "Stream archive encoder created successfully"
                                       : "Failed to create stream archive encoder");
}

void ObsWrapper::setupFFmpeg(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate, int format)
{
    qDebug() << "Setting up FFmpeg...";
    createOutputMode();
    if (!m_output) {
        qDebug() << "Error: fileOutput is null!";
        return;
    }
    giveEncodersTheSound();
    qDebug().noquote().nospace() << "set up ffpmeg with storePath:[" << storePath << "] srcWidth:[" << srcWidth
                                 << "] srcHeight:[" << srcHeight << "] fps:[" << fps << "] bitRate:[" << bitRate
                                 << "] format:[" << diagnosticFormatName(format) << "]";
    m_format = recordingFormatFromIndex(format);
    const FfmpegRequest request{storePath, evenSize(srcWidth), evenSize(srcHeight), fps, bitRate};
    m_encoderDelayFrames = encoderDelay(m_format, request.heightPx);
    const ObsDataHandle settings = buildFfmpegSettings(m_format, request);
    qDebug().noquote() << QStringLiteral("Output file path (%1):").arg(recordingFormatName(m_format))
                       << recordingUrl(storePath, m_format);
    qDebug() << "Setting mixer and media...";
    obs_output_set_mixer(m_output.get(), kRecordedMixer);
    giveOutputTheLines();
    obs_output_update(m_output.get(), settings.get());
    qDebug() << "FFmpeg setup completed";
    letPicturesFlow();
}

void ObsWrapper::giveOutputTheLines()
{
    obs_output_set_media(m_output.get(), obs_get_video(), obs_get_audio());
    const video_scale_info form = pictureFormFor(m_format);
    obs_output_set_video_conversion(m_output.get(), &form);
}

void ObsWrapper::giveEncodersTheSound()
{
    audio_t* sound = obs_get_audio();
    for (const ObsEncoderHandle& encoder : m_trackEncoders)
        obs_encoder_set_audio(encoder.get(), sound);
    obs_encoder_set_audio(m_streamAudioEncoder.get(), sound);
    obs_encoder_set_audio(m_archiveAudioEncoder.get(), sound);
}

/// An idle engine needs some tenths of a second for its first picture. Here they are no part of the recording.
void ObsWrapper::letPicturesFlow()
{
    m_progress.connect(kRecordedMixer);
    m_progress.waitForPicture(m_timings.firstFrameLimit);
}

int ObsWrapper::startRecording()
{
    if (m_endingOnOwnThread) {
        qWarning() << "A recording cannot start before the end of the last one has been signalled to everybody";
        return -1;
    }
    // A handler of the previous recording may still be at its last lines.
    m_stopHandlers.waitUntilEmpty();
    m_endOwed = true;
    m_stoppedEarly = false;
    m_endedByItselfNs = 0;
    m_diskDrain.reset();
    setRecordingEnd({});
    emit recordStatusChanged(recordstatus::kStarted);
    qDebug() << "Starting recording...";
    if (!m_output)
        return failToStart();

    // A reset of the video has ended it, or the end of the last recording, which said so late.
    if (!m_progress.isConnected())
        letPicturesFlow();
    // The output runs on threads of its own and may fail before obs_output_start() has even returned.
    ObsSignalConnection early =
        connectSignal(obs_output_get_signal_handler(m_output.get()), kStopSignal, &onOutputStoppedEarly, this);
    if (!obs_output_start(m_output.get()))
        return failToStart();
    qDebug() << "Recording started successfully";
    m_recording = true;
    m_paused = false;
    m_pauseEffectNs = 0;
    connectStopHandler();
    early.reset();
    if (m_stoppedEarly)
        endRecording();
    return 0;
}

void ObsWrapper::connectStopHandler()
{
    ObsSignalConnection previous;
    {
        const QMutexLocker locker(&m_endMutex);
        previous = std::move(m_outputSignal);
    }
    previous.reset();
    // Connected without the lock: libobs calls handlers while it holds the signal's own, and they take this one.
    ObsSignalConnection connection =
        connectSignal(obs_output_get_signal_handler(m_output.get()), kStopSignal, &onOutputStopped, this);
    {
        const QMutexLocker locker(&m_endMutex);
        m_outputSignal = std::move(connection);
    }
    // Ended in between: the handler found nothing to take off.
    if (!m_endOwed)
        dropStopHandler();
}

void ObsWrapper::dropStopHandler()
{
    ObsSignalConnection connection;
    {
        const QMutexLocker locker(&m_endMutex);
        connection = std::move(m_outputSignal);
    }
    connection.reset();
}

int ObsWrapper::failToStart()
{
    m_progress.disconnect();
    const char* text = m_output ? obs_output_get_last_error(m_output.get()) : nullptr;
    qDebug() << "Failed to start recording. Error:" << (text ? text : "No error message");
    if (m_endOwed.exchange(false)) {
        // An output that ended while it was being started has said more precisely why.
        if (endReason().code == OBS_OUTPUT_SUCCESS)
            setRecordingEnd({OBS_OUTPUT_ERROR, QString::fromUtf8(text)});
        emit recordStatusChanged(recordstatus::kEnded);
    }
    return -1;
}

void ObsWrapper::onOutputStoppedEarly(void* wrapper, calldata_t* stopSignal)
{
    auto& self = *static_cast<ObsWrapper*>(wrapper);
    const CallbackGate::Pass pass(self.m_stopHandlers);
    self.noteStop(stopSignal);
    self.m_stoppedEarly = true;
}

void ObsWrapper::onOutputStopped(void* wrapper, calldata_t* stopSignal)
{
    auto* self = static_cast<ObsWrapper*>(wrapper);
    if (!self)
        return;
    const CallbackGate::Pass pass(self->m_stopHandlers);
    self->noteStop(stopSignal);
    self->endRecording();
}

void ObsWrapper::noteStop(calldata_t* stopSignal)
{
    if (m_endOwed)
        setRecordingEnd(endFrom(stopSignal));
    if (QThread::currentThread() == thread())
        return;
    m_endedByItselfNs = os_gettime_ns();
    // The output frees its encoders as soon as this returns. The lines pass it nothing any more, but may still be
    // inside.
    const CaptureProgress::StandStill still(m_progress);
    // While it follows the lines the engine counts as active, and reads every picture back for nobody.
    QMetaObject::invokeMethod(this, &ObsWrapper::stopFollowing, Qt::QueuedConnection);
}

void ObsWrapper::stopFollowing()
{
    if (!isRecording())
        m_progress.disconnect();
}

void ObsWrapper::endRecording()
{
    if (!m_endOwed.exchange(false))
        return;
    const bool onOwnThread = QThread::currentThread() == thread();
    if (onOwnThread)
        m_endingOnOwnThread = true;
    emit recordStatusChanged(recordstatus::kEnded);
    if (onOwnThread)
        m_endingOnOwnThread = false;
    dropStopHandler();
    m_recording = false;
    m_paused = false;
}

int ObsWrapper::stopRecording(bool force)
{
    if (m_output)
        endOutput(force);
    m_progress.disconnect();
    m_recording = false;
    m_paused = false;
    return 0;
}

void ObsWrapper::endOutput(bool force)
{
    const bool starting = isOutputStarting();
    // Whoever hears of the end inside this call and prepares the next recording must not take this output away.
    ObsOutputHandle output = std::move(m_output);
    if (starting) {
        letStartingOutputRest(std::move(output));
        return;
    }
    stopOutput(output.get(), force);
    m_recordedFrames = static_cast<quint64>(obs_output_get_total_frames(output.get()));
    letOutputRest(std::move(output));
    m_restingOutputs.releaseDue();
}

void ObsWrapper::letStartingOutputRest(ObsOutputHandle output)
{
    m_restingOutputs.keepStarting(std::move(output), m_endedByItselfNs);
    m_recordedFrames = 0;
    if (m_endOwed)
        setRecordingEnd({OBS_OUTPUT_CONNECT_FAILED, QStringLiteral("it took too long")});
    endRecording();
    m_endedByItselfNs = 0;
}

void ObsWrapper::stopOutput(obs_output_t* output, bool force)
{
    if (hasEndedByItself())
        return;
    const CaptureProgress::StandStill still(m_progress);
    // A file that could not be written to its end has been given up, and the output is closing it on a thread of its
    // own: a stop would have this thread close it as well.
    if (hasEndedByItself())
        return;
    if (force)
        obs_output_force_stop(output);
    else
        obs_output_stop(output);
}

bool ObsWrapper::isOutputStarting() const
{
    return m_output && m_recording && !hasEndedByItself() && !obs_output_active(m_output.get());
}

void ObsWrapper::letOutputRest(ObsOutputHandle output)
{
    const std::uint64_t endedNs = m_endedByItselfNs.exchange(0);
    if (output && endedNs != 0)
        m_restingOutputs.keepEnded(std::move(output), endedNs);
    else if (output)
        m_restingOutputs.keep(std::move(output));
}

bool ObsWrapper::canPauseRecording() const
{
    return m_output && obs_output_can_pause(m_output.get());
}

bool ObsWrapper::pauseRecording(bool pause)
{
    // Before its first picture an output has no beat yet for a pause to begin on.
    if (!isRecording() || !canPauseRecording() || recordedFrames() == 0)
        return false;
    if (pause == m_paused)
        return true;
    m_progress.waitUntilMet(m_timings.pauseLimit);
    if (!pause)
        waitUntilPauseHasBegun();
    return tellOutputToPause(pause);
}

/// A pause shorter than a block of sound would end in the block in which it begins, which libobs cannot do.
void ObsWrapper::waitUntilPauseHasBegun() const
{
    const std::uint64_t beatNs = video_output_get_frame_time(obs_get_video());
    waitUntil([&] { return m_progress.pauseTakesEffectNs(os_gettime_ns()) > m_pauseEffectNs + beatNs; }, m_timings.pauseLimit);
}

bool ObsWrapper::tellOutputToPause(bool pause)
{
    const auto effectAfterNs = [this](std::uint64_t delayNs) {
        return m_progress.pauseTakesEffectNs(os_gettime_ns() + delayNs);
    };
    // Not just before the line's next beat: the moment would be another one when libobs looks at the clock.
    waitUntil([&] { return effectAfterNs(kPauseCallNs) == effectAfterNs(0); }, m_timings.pauseLimit);
    m_pauseEffectNs = effectAfterNs(0);
    // The lines must not get there before they know.
    if (!pause)
        m_progress.meetAt(m_pauseEffectNs);
    if (!obs_output_pause(m_output.get(), pause)) {
        m_progress.meetingIsOff();
        return false;
    }
    m_paused = pause;
    return true;
}

void ObsWrapper::requestRecordingEnd()
{
    if (m_paused)
        pauseRecording(false);
    // What passes before a pause has ended does not reach the encoder.
    m_progress.mark(std::max<std::uint64_t>(os_gettime_ns(), m_pauseEffectNs));
}

bool ObsWrapper::isRecordingEndReached()
{
    if (!isRecording())
        return true;
    // What passes while the file is still being opened does not reach the encoder.
    if (!m_progress.isMarked() || isOutputStarting())
        return false;
    // Pictures that passed while the file was still being opened have not reached the encoder.
    const bool picture = m_progress.framesSinceMark() > m_encoderDelayFrames &&
                         recordedFrames() > static_cast<quint64>(m_encoderDelayFrames);
    const bool sound = m_progress.soundSinceMarkNs() > kSoundDelayNs;
    const bool isEncoded = (picture || !hasVideo(m_format)) && (sound || m_format == RecordingFormat::Gif);
    if (picture || isEncoded)
        m_progress.holdPicture();
    if (sound || isEncoded)
        m_progress.holdSound();
    return isEncoded && m_progress.isHeld() &&
           m_diskDrain.isOver(obs_output_get_total_bytes(m_output.get()), os_gettime_ns());
}

quint64 ObsWrapper::recordedFrames() const
{
    return m_output ? static_cast<quint64>(obs_output_get_total_frames(m_output.get())) : m_recordedFrames;
}

void ObsWrapper::setRecordingEnd(const RecordingEnd& end)
{
    const QMutexLocker locker(&m_endMutex);
    m_recordingEnd = end;
}

RecordingEnd ObsWrapper::endReason() const
{
    const QMutexLocker locker(&m_endMutex);
    return m_recordingEnd;
}

QString ObsWrapper::endReasonText() const
{
    const RecordingEnd end = endReason();
    return end.code == OBS_OUTPUT_SUCCESS && end.text.isEmpty() ? QString() : describe(end);
}
