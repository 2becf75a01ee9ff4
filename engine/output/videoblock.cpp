// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/videoblock.h"

#include "engine/core/rawvideo.h"

VideoBlock::VideoBlock(video_output* video) : m_video(video)
{
    constexpr std::chrono::seconds kLimit{1};
    m_gate.close();
    connectRawVideo(m_video, &VideoBlock::onFrame, this);
    m_gate.waitUntilBlocked(kLimit);
}

VideoBlock::~VideoBlock()
{
    // libobs keeps its list of callbacks locked while one of them waits.
    m_gate.setBypassed(true);
    disconnectRawVideo(m_video, &VideoBlock::onFrame, this);
}

void VideoBlock::onFrame(void* block, video_data*)
{
    static_cast<VideoBlock*>(block)->m_gate.pass();
}
