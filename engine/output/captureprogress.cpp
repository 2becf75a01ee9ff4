#include "engine/output/captureprogress.h"

#include "engine/core/waituntil.h"
#include "engine/output/ffmpegsettings.h"

#include <obs.h>
#include <util/platform.h>

#include <algorithm>

CaptureProgress::~CaptureProgress()
{
    disconnect();
}

void CaptureProgress::connect(std::size_t mixerIndex)
{
    disconnect();
    releaseHolds();
    m_mixerIndex = mixerIndex;
    m_markNs = kNoMark;
    m_framesSinceMark = 0;
    m_picture = nullptr;
    m_pictureNs = 0;
    m_lineNs = 0;
    m_resume.callOff();
    m_hasPicture = false;
    m_soundNs = 0;
    m_pictureGate.setBypassed(false);
    m_soundGate.setBypassed(false);
    // In the lines' own form, so that nothing is converted.
    const video_scale_info form = enginePictureForm();
    obs_add_raw_video_callback(&form, &CaptureProgress::onFrame, this);
    obs_add_raw_audio_callback(m_mixerIndex, nullptr, &CaptureProgress::onSound, this);
    m_connected = true;
}

void CaptureProgress::disconnect()
{
    if (!m_connected)
        return;
    // libobs keeps its list of listeners locked while a line waits.
    m_resume.callOff();
    m_pictureGate.setBypassed(true);
    m_soundGate.setBypassed(true);
    obs_remove_raw_audio_callback(m_mixerIndex, &CaptureProgress::onSound, this);
    obs_remove_raw_video_callback(&CaptureProgress::onFrame, this);
    m_connected = false;
    releaseHolds();
}

bool CaptureProgress::waitForPicture(std::chrono::milliseconds limit) const
{
    return waitUntil([this] { return m_hasPicture.load(); }, limit);
}

void CaptureProgress::mark(std::uint64_t momentNs)
{
    std::uint64_t expected = kNoMark;
    m_markNs.compare_exchange_strong(expected, momentNs);
}

bool CaptureProgress::isMarked() const
{
    return m_markNs != kNoMark;
}

int CaptureProgress::framesSinceMark() const
{
    // The latest picture seen here reaches the output only after this object.
    return std::max(0, m_framesSinceMark - 1);
}

std::int64_t CaptureProgress::soundSinceMarkNs() const
{
    return isMarked() ? static_cast<std::int64_t>(m_soundNs) - static_cast<std::int64_t>(m_markNs.load()) : 0;
}

std::uint64_t CaptureProgress::pauseTakesEffectNs(std::uint64_t nowNs) const
{
    const std::uint64_t beatNs = video_output_get_frame_time(obs_get_video());
    const std::uint64_t lineNs = m_lineNs;
    return lineNs + (nowNs - lineNs + 2 * beatNs) / beatNs * beatNs;
}

void CaptureProgress::onFrame(void* param, video_data* frame)
{
    auto& self = *static_cast<CaptureProgress*>(param);
    self.m_hasPicture = true;
    // An engine that is late hands a picture out several times, each time with the next time stamp: the first one is
    // when it was taken. Another picture lies elsewhere in the line's buffer.
    if (frame->data[0] != self.m_picture) {
        self.m_picture = frame->data[0];
        self.m_pictureNs = frame->timestamp;
    }
    if (self.m_pictureNs >= self.m_markNs)
        ++self.m_framesSinceMark;
    self.m_lineNs = frame->timestamp;
    self.m_resume.pictureArrives(frame->timestamp);
    self.m_pictureGate.pass();
}

void CaptureProgress::onSound(void* param, std::size_t, audio_data* sound)
{
    // The start of the block: its end is with the output only after this object.
    auto& self = *static_cast<CaptureProgress*>(param);
    self.m_soundNs = sound->timestamp;
    const std::uint32_t rate = audio_output_get_sample_rate(obs_get_audio());
    self.m_resume.soundHasPassed(sound->timestamp, sound->timestamp + audio_frames_to_ns(rate, sound->frames));
    self.m_soundGate.pass();
}

void CaptureProgress::holdPicture()
{
    if (!m_pictureIsHeld.exchange(true))
        m_pictureGate.close();
}

void CaptureProgress::holdSound()
{
    if (!m_soundIsHeld.exchange(true))
        m_soundGate.close();
}

bool CaptureProgress::isHeld()
{
    return m_pictureGate.waitUntilHeld(0) && m_soundGate.waitUntilHeld(0);
}

void CaptureProgress::releaseHolds()
{
    if (m_pictureIsHeld.exchange(false))
        m_pictureGate.open();
    if (m_soundIsHeld.exchange(false))
        m_soundGate.open();
}

CaptureProgress::StandStill::StandStill(CaptureProgress& progress) : m_progress(progress)
{
    m_progress.m_resume.callOff();
    // Both at once: the two waits then overlap.
    m_progress.m_pictureGate.close();
    m_progress.m_soundGate.close();
    if (!m_progress.m_connected)
        return;
    constexpr int kLongestMs = 1000;
    m_progress.m_pictureGate.waitUntilHeld(kLongestMs);
    m_progress.m_soundGate.waitUntilHeld(kLongestMs);
}

CaptureProgress::StandStill::~StandStill()
{
    m_progress.releaseHolds();
    m_progress.m_pictureGate.open();
    m_progress.m_soundGate.open();
}
