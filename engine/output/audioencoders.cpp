// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/audioencoders.h"

#include <QByteArray>
#include <QDebug>

#include <algorithm>

namespace {

constexpr size_t kStreamMixer = 0;
constexpr size_t kArchiveMixer = 1;

ObsEncoderHandle createEncoder(const char* name, size_t mixerIndex)
{
    return ObsEncoderHandle(obs_audio_encoder_create("ffmpeg_aac", name, nullptr, mixerIndex, nullptr));
}

} // namespace

bool AudioEncoders::create()
{
    for (size_t track = 0; track < kTracks; ++track) {
        const QByteArray name = "adv_aac" + QByteArray::number(static_cast<int>(track));
        m_encoders.at(track) = createEncoder(name.constData(), track);
        if (!m_encoders.at(track)) {
            qDebug() << "Failed to create AAC encoder for track" << track;
            return false;
        }
    }
    m_encoders.at(kStream) = createEncoder("adv_stream_audio", kStreamMixer);
    qDebug() << (m_encoders.at(kStream) ? "Stream audio encoder created successfully"
                                        : "Failed to create stream audio encoder");
    m_encoders.at(kArchive) = createEncoder("adv_archive_audio", kArchiveMixer);
    qDebug() << (m_encoders.at(kArchive) ? "Stream archive encoder created successfully"
                                         : "Failed to create stream archive encoder");
    return true;
}

void AudioEncoders::setAudio(audio_t* audio)
{
    for (const ObsEncoderHandle& encoder : m_encoders)
        obs_encoder_set_audio(encoder.get(), audio);
}

void AudioEncoders::release()
{
    std::for_each(m_encoders.rbegin(), m_encoders.rend(), [](ObsEncoderHandle& encoder) { encoder.reset(); });
}
