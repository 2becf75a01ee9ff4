#pragma once

#include "engine/core/enginetimings.h"
#include "engine/output/linegate.h"
#include "engine/output/resumemeeting.h"

#include <atomic>
#include <cstdint>
#include <limits>

struct audio_data;
struct video_data;

/// Follows how far the picture and the sound on their way to a running output have got, by the engine's own time
/// stamps.
///
/// It listens on the same lines as the output, one place ahead of it: connect before the output starts. While it is
/// connected the engine counts as active and its video cannot be reset. connect() and disconnect() belong to one
/// thread; the rest may be called from any.
class CaptureProgress
{
public:
    /// @param resumeLimit how long video and audio wait for each other at the end of a pause
    explicit CaptureProgress(std::chrono::milliseconds resumeLimit = EngineTimings().resumeLimit)
        : m_resume(resumeLimit)
    {}
    ~CaptureProgress();
    CaptureProgress(const CaptureProgress&) = delete;
    CaptureProgress& operator=(const CaptureProgress&) = delete;

    /// Starts to follow the main picture line and the sound of mixer mixerIndex. Needs a running engine. Connects anew
    /// when connected already.
    void connect(std::size_t mixerIndex);

    /// Stops following; no callback runs any more when it returns. The engine must still be running.
    void disconnect();

    bool isConnected() const { return m_connected; }

    /// Waits until a picture has come since connect(). The first one after an idle time can take some tenths of a
    /// second, for which the output would leave out the sound.
    ///
    /// @return false when none came within the time
    bool waitForPicture(std::chrono::milliseconds limit) const;

    /// Takes a moment as the mark, unless one was taken since connect().
    void mark(std::uint64_t momentNs);
    bool isMarked() const;

    /// How many pictures taken at or after the mark have been handed to the output for certain; 0 without a mark.
    int framesSinceMark() const;

    /// Nanoseconds of sound after the mark that have been handed to the output for certain; negative while sound from
    /// before the mark is on its way, and 0 without a mark.
    std::int64_t soundSinceMarkNs() const;

    /// The picture with which a pause begins or ends that the library is told of at the given moment: one or two
    /// pictures later, on the beat of the line. The sound begins or ends at the same moment.
    std::uint64_t pauseTakesEffectNs(std::uint64_t nowNs) const;

    /// Lets an output whose pause ends at the moment go on with picture and sound together.
    void meetAt(std::uint64_t momentNs) { m_resume.appoint(momentNs); }

    void meetingIsOff() { m_resume.callOff(); }

    /// Whether both lines have passed the last moment of meetAt(). Waits for it.
    bool waitUntilMet(std::chrono::milliseconds limit) { return m_resume.waitUntilOver(limit); }

    /// Lets the line wait until a StandStill has passed or disconnect(): its end has been reached, and what follows
    /// shall not get into the file while the other line is on its way.
    void holdPicture();
    void holdSound();

    /// Whether both lines wait, so that the output is in no callback of theirs.
    bool isHeld();

    /// Stands both lines still while it lives, so that the output is in no callback of theirs. The stock output frees
    /// its encoders inside its stop without waiting for the line that may be encoding with them at that moment.
    ///
    /// Waits up to a second for each line; a line that does not move by then is not in a callback either, as far as can
    /// be known. Does nothing while not connected; disconnect() ends it.
    class StandStill
    {
    public:
        explicit StandStill(CaptureProgress& progress);
        ~StandStill();
        StandStill(const StandStill&) = delete;
        StandStill& operator=(const StandStill&) = delete;

    private:
        CaptureProgress& m_progress;
    };

private:
    static constexpr std::uint64_t kNoMark = std::numeric_limits<std::uint64_t>::max();

    void releaseHolds();
    static void onFrame(void* param, video_data* frame);
    static void onSound(void* param, std::size_t mixerIndex, audio_data* sound);

    LineGate m_pictureGate;
    LineGate m_soundGate;
    ResumeMeeting m_resume;
    std::atomic<bool> m_pictureIsHeld{false};
    std::atomic<bool> m_soundIsHeld{false};
    std::atomic<bool> m_connected{false};
    std::size_t m_mixerIndex = 0;
    /// Where the line keeps the latest picture, and when that was taken. Used on the line's thread only.
    const std::uint8_t* m_picture = nullptr;
    std::uint64_t m_pictureNs = 0;
    /// The time stamp of the last picture, repeated ones included.
    std::atomic<std::uint64_t> m_lineNs{0};
    std::atomic<std::uint64_t> m_markNs{kNoMark};
    std::atomic<bool> m_hasPicture{false};
    std::atomic<int> m_framesSinceMark{0};
    std::atomic<std::uint64_t> m_soundNs{0};
};
