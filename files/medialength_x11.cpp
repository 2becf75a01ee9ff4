// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/avformathandles.h"
#include "files/filework.h"
#include "files/medialength.h"
#include "files/mp4file.h"

#include <QFile>

#include <algorithm>
#include <cstdint>

using avformathandles::Input;
using avformathandles::Packet;
using std::chrono::milliseconds;

namespace {

/// The formats that the program records, and nothing that leads to other files or the network.
AVDictionary* limits()
{
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", "mp4,avi,flv,gif,mp3,aac,flac", 0);
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    return options;
}

/// A code of libavformat, negative where it failed.
int openInput(const QString& path, FileWork& work, Input& input)
{
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->interrupt_callback = avformathandles::interruptedBy(work);
    AVDictionary* options = limits();
    // Frees the context where it fails.
    const int opened =
        avformat_open_input(&context, ("file:" + QFile::encodeName(path)).constData(), nullptr, &options);
    av_dict_free(&options);
    if (opened >= 0)
        input.reset(context);
    return opened;
}

/// Nothing where the head does not say it.
std::optional<milliseconds> lengthInHead(const AVFormatContext& input)
{
    int64_t longest = input.duration;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        const AVStream& stream = *input.streams[i];
        if (stream.duration > 0)
            longest = std::max(longest, av_rescale_q(stream.duration, stream.time_base, AV_TIME_BASE_Q));
    }
    if (longest <= 0)
        return std::nullopt;
    return milliseconds(longest / (AV_TIME_BASE / 1000));
}

/// Packets of one stream are enough.
void keepOneStream(AVFormatContext& input, int kept)
{
    for (unsigned i = 0; i < input.nb_streams; ++i)
        input.streams[i]->discard = static_cast<int>(i) == kept ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

/// From the first packet's time to the end of the last one.
std::optional<milliseconds> lengthOfPackets(AVFormatContext& input, FileWork& work)
{
    if (avformat_find_stream_info(&input, nullptr) < 0)
        return std::nullopt;
    const int sound = av_find_best_stream(&input, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    const Packet packet(av_packet_alloc());
    int64_t first = INT64_MAX;
    int64_t end = INT64_MIN;
    while (packet && !work.isCancelled() && av_read_frame(&input, packet.get()) >= 0) {
        // Those of sound are the smaller ones, but a killed program may have left none.
        if (packet->stream_index == sound)
            keepOneStream(input, sound);
        if (const int64_t time = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts; time != AV_NOPTS_VALUE) {
            const AVRational base = input.streams[packet->stream_index]->time_base;
            first = std::min(first, av_rescale_q(time, base, AV_TIME_BASE_Q));
            end = std::max(end, av_rescale_q(time + packet->duration, base, AV_TIME_BASE_Q));
        }
        av_packet_unref(packet.get());
    }
    if (end <= first || work.isCancelled() || avformathandles::diskError(input) < 0)
        return std::nullopt;
    return milliseconds((end - first) / (AV_TIME_BASE / 1000));
}

} // namespace

MediaLength mediaLength(const QString& path, FileWork& work)
{
    Input input;
    const int opened = openInput(path, work, input);
    if (opened < 0)
        return {{}, opened == AVERROR_INVALIDDATA || opened == AVERROR_EOF};
    // The head of fragments says no more than how long the first one is.
    const auto inHead = isFragmentedMp4(path) ? std::nullopt : lengthInHead(*input);
    const auto length = inHead ? inHead : lengthOfPackets(*input, work);
    return {length, !length && !work.isCancelled() && avformathandles::diskError(*input) == 0};
}
