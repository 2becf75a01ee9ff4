#pragma once

#include "engine/ffmpegsettings.h"

#include <QMutex>

#include <obs.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

class QThread;

/// How many pictures have to follow a picture before the format's encoder has surely given that one out, whatever the
/// computer: the longest look-ahead the encoder has with its default settings, plus its threads. 0 without a picture.
int encoderDelayBound(RecordingFormat format);

/// How many pictures have to follow with MP4's encoder as libobs runs it (libx264's preset "veryfast"), by libx264's
/// own arithmetic. A trial is to be trusted more: another libobs may run it in another way.
///
/// @param heightPx   of the recorded picture: a low one gets fewer threads
/// @param processors logical ones, of which libx264 makes its threads
int computedEncoderDelay(int heightPx, int processors);

/// How long the output's writing thread gets to take up a frame that the encoder returned. Too short a time makes the
/// measured delay too large by some, never too small.
inline constexpr std::chrono::milliseconds kProbeWriterLimit{15};

/// Lets a second output with the same settings encode blank pictures into nothing, and counts how many go in before the
/// first one comes out. The pictures come from a line of their own, so the engine does not count as active and its
/// video can be reset meanwhile. Needs a running engine with its modules; takes about a second; call on any thread.
///
/// @param line form of the engine's picture line: size, colours, pictures per second
/// @param cancelled when it becomes true the trial ends without a result
/// @return the number of pictures that have to follow, computed where libobs (31.1) hands an output nothing of a line
///         but its own; nothing when the output could not be run
std::optional<int> runEncoderTrial(RecordingFormat format, const FfmpegRequest& request, const video_output_info& line,
                                   const std::atomic<bool>& cancelled,
                                   std::chrono::milliseconds writerLimit = kProbeWriterLimit);

/// Knows how many pictures the encoder of a recording holds back on this computer. It is measured in the background
/// with low priority. What was found for a size holds for every smaller one: the encoders use fewer threads for a low
/// picture, never more.
///
/// Belongs to one thread.
class EncoderDelay
{
public:
    EncoderDelay();
    /// Cancels a trial that is under way.
    ~EncoderDelay();
    EncoderDelay(const EncoderDelay&) = delete;
    EncoderDelay& operator=(const EncoderDelay&) = delete;

    /// Starts a trial unless the answer is known or a trial runs. Only MP4's encoder is put to it: the others hold back
    /// so little that the bound serves as well.
    void measure(RecordingFormat format, const FfmpegRequest& request, const video_output_info& line);

    /// Ends a trial that is under way; none runs when it returns. Comes before every reset of the engine's video, which
    /// a starting output looks at. Waits until the trial's encoder has been opened, and until a picture inside it has
    /// been encoded: some tens of milliseconds, and as much longer as the machine is slow.
    ///
    /// @return whether there was one
    bool cancel();

    /// The pictures that have to follow; encoderDelayBound() until the answer is known.
    int frames(RecordingFormat format, const FfmpegRequest& request) const;

    /// Whether the answer is known.
    bool isMeasured(RecordingFormat format, const FfmpegRequest& request) const;

private:
    struct Finding
    {
        RecordingFormat format;
        int widthPx;
        int heightPx;
        int frames;
    };

    std::optional<int> find(RecordingFormat format, const FfmpegRequest& request) const;
    void keep(const Finding& finding);

    /// Guards m_findings, to which the trial's thread adds.
    mutable QMutex m_mutex;
    std::vector<Finding> m_findings;
    std::atomic<bool> m_cancelled{false};
    std::unique_ptr<QThread> m_thread;
};
