// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/hybridmp4.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

bool writesHybridMp4()
{
    const AVOutputFormat* const mp4 = av_guess_format("mp4", nullptr, nullptr);
    // The flag is a named value of the option, which the class of the muxer's context lists.
    const AVClass* options = mp4 ? mp4->priv_class : nullptr;
    return options && av_opt_find(static_cast<void*>(&options), "hybrid_fragmented", "movflags", 0,
                                  AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}
