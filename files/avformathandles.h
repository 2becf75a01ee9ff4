// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "files/filework.h"

#include <memory>

extern "C" {
#include <libavformat/avformat.h>
}

/// libavformat's handles.
namespace avformathandles {

struct CloseInput
{
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct FreePacket
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Input = std::unique_ptr<AVFormatContext, CloseInput>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;

/// Work that is cancelled interrupts what it reads or writes.
inline AVIOInterruptCB interruptedBy(FileWork& work)
{
    return {[](void* cancelled) { return static_cast<const FileWork*>(cancelled)->isCancelled() ? 1 : 0; }, &work};
}

/// A disk that cannot be read is no end of the file. 0, or a code of libavformat.
inline int diskError(const AVFormatContext& input)
{
    const int error = input.pb->error;
    return error < 0 && error != AVERROR_EOF ? error : 0;
}

} // namespace avformathandles
