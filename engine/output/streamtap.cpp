// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/streamtap.h"

#include "engine/core/rawvideo.h"
#include "engine/core/waituntil.h"

#include <obs.h>

#include <algorithm>

StreamTap::~StreamTap()
{
    disconnect();
}

void StreamTap::connect(std::size_t mixerIndex, video_output* video)
{
    disconnect();
    unblock();
    m_mixerIndex = mixerIndex;
    m_video = video;
    m_markNs = kNoMark;
    m_framesSinceMark = 0;
    m_frame = nullptr;
    m_frameNs = 0;
    m_videoNs = 0;
    m_sync.cancel();
    m_hasFrame = false;
    m_audioNs = 0;
    m_videoGate.setBypassed(false);
    m_audioGate.setBypassed(false);
    connectRawVideo(m_video, &StreamTap::onFrame, this);
    obs_add_raw_audio_callback(m_mixerIndex, nullptr, &StreamTap::onAudio, this);
    m_connected = true;
}

void StreamTap::disconnect()
{
    if (!m_connected)
        return;
    // libobs keeps its list of callbacks locked while a stream waits.
    m_sync.cancel();
    m_videoGate.setBypassed(true);
    m_audioGate.setBypassed(true);
    obs_remove_raw_audio_callback(m_mixerIndex, &StreamTap::onAudio, this);
    disconnectRawVideo(m_video, &StreamTap::onFrame, this);
    m_connected = false;
    unblock();
}

bool StreamTap::waitForFrame(std::chrono::milliseconds limit) const
{
    return waitUntil([this] { return m_hasFrame.load(); }, limit);
}

void StreamTap::mark(std::uint64_t momentNs)
{
    std::uint64_t expected = kNoMark;
    m_markNs.compare_exchange_strong(expected, momentNs);
}

int StreamTap::framesSinceMark() const
{
    // The latest frame seen here reaches the output only after this object.
    return std::max(0, m_framesSinceMark - 1);
}

std::int64_t StreamTap::audioSinceMarkNs() const
{
    return isMarked() ? static_cast<std::int64_t>(m_audioNs) - static_cast<std::int64_t>(m_markNs.load()) : 0;
}

std::uint64_t StreamTap::pauseEffectNs(std::uint64_t nowNs) const
{
    const std::uint64_t frameIntervalNs = video_output_get_frame_time(obs_get_video());
    const std::uint64_t videoNs = m_videoNs;
    return videoNs + (nowNs - videoNs + 2 * frameIntervalNs) / frameIntervalNs * frameIntervalNs;
}

void StreamTap::onFrame(void* param, video_data* frame)
{
    auto& self = *static_cast<StreamTap*>(param);
    self.m_hasFrame = true;
    // An engine that is late hands a frame out several times, each time with the next time stamp: the first one is when
    // it was taken. Another frame lies elsewhere in the buffer.
    if (frame->data[0] != self.m_frame) {
        self.m_frame = frame->data[0];
        self.m_frameNs = frame->timestamp;
    }
    if (self.m_frameNs >= self.m_markNs)
        ++self.m_framesSinceMark;
    self.m_videoNs = frame->timestamp;
    self.m_sync.videoArrives(frame->timestamp);
    self.m_videoGate.pass();
}

void StreamTap::onAudio(void* param, std::size_t, audio_data* audio)
{
    // The start of the block: its end is with the output only after this object.
    auto& self = *static_cast<StreamTap*>(param);
    self.m_audioNs = audio->timestamp;
    const std::uint32_t rate = audio_output_get_sample_rate(obs_get_audio());
    self.m_sync.audioHasPassed(audio->timestamp, audio->timestamp + audio_frames_to_ns(rate, audio->frames));
    self.m_audioGate.pass();
}

void StreamTap::blockVideo()
{
    if (!m_videoIsBlocked.exchange(true))
        m_videoGate.close();
}

void StreamTap::blockAudio()
{
    if (!m_audioIsBlocked.exchange(true))
        m_audioGate.close();
}

bool StreamTap::isBlocked()
{
    constexpr std::chrono::milliseconds kNow{0};
    return m_videoGate.waitUntilBlocked(kNow) && m_audioGate.waitUntilBlocked(kNow);
}

void StreamTap::unblock()
{
    if (m_videoIsBlocked.exchange(false))
        m_videoGate.open();
    if (m_audioIsBlocked.exchange(false))
        m_audioGate.open();
}

StreamTap::Quiesce::Quiesce(StreamTap& tap, bool video) : m_tap(tap), m_blocksVideo(video)
{
    m_tap.m_sync.cancel();
    // Both at once: the two waits then overlap.
    if (m_blocksVideo)
        m_tap.m_videoGate.close();
    m_tap.m_audioGate.close();
    if (!m_tap.m_connected)
        return;
    constexpr std::chrono::seconds kLimit{1};
    if (m_blocksVideo)
        m_tap.m_videoGate.waitUntilBlocked(kLimit);
    m_tap.m_audioGate.waitUntilBlocked(kLimit);
}

StreamTap::Quiesce::~Quiesce()
{
    m_tap.unblock();
    if (m_blocksVideo)
        m_tap.m_videoGate.open();
    m_tap.m_audioGate.open();
}
