// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/vectorconversion_x86.h"

#include "engine/capture/x11/conversionkind.h"

std::vector<VideoConversionKind> vectorConversionKinds()
{
    std::vector<VideoConversionKind> kinds;
    if (__builtin_cpu_supports("avx2"))
        kinds.push_back({"AVX2", convertRowPairAvx2});
    if (__builtin_cpu_supports("sse2"))
        kinds.push_back({"SSE2", convertRowPairSse2});
    return kinds;
}
