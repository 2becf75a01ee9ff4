// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/obswrapper.h"

#include <QList>
#include <QObject>
#include <QSignalSpy>

#include <atomic>
#include <memory>

/// Follows a video, beside the outputs: a frame that has passed here has been handed to them, but for the latest one.
class PassingFrames
{
public:
    /// @param video null means the engine's
    explicit PassingFrames(video_t* video = nullptr);
    ~PassingFrames();
    PassingFrames(const PassingFrames&) = delete;
    PassingFrames& operator=(const PassingFrames&) = delete;

    /// Waits until so many more have passed; false when they do not come.
    bool waitFor(int count) const;
    int count() const { return m_passed; }

private:
    static void onFrame(void* passed, video_data* frame);

    video_t* const m_video;
    std::atomic<int> m_passed{0};
};

/// What the tests of recording share: each test function has a wrapper of its own over the stand-ins.
class EngineRecordingTest : public QObject
{
    Q_OBJECT

protected:
    /// The program's, but an output that opens its file too slowly is soon cancelled, and one that ended by itself soon
    /// released with the wrapper.
    static EngineTimings quickTimings();
    /// Makes the wrapper, in place of the one that is there.
    void make(const EngineTimings& timings);

    /// Prepares a recording of this format.
    void setup(int format);

    /// The numbers that a spy on recordStatusChanged() has seen.
    static QList<int> statuses(const QSignalSpy& spy);

    /// Signals that the output has stopped, the way a plug-in does.
    static void signalStop(obs_output_t* output, int code);

    /// For the end of a recording, however long the encoder buffers.
    static constexpr int kEndTimeoutMs = 10'000;

    std::unique_ptr<ObsWrapper> m_wrapper;
    std::unique_ptr<QSignalSpy> m_status;

private slots:
    void init();
    void cleanup();
};
