// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/output/hybridmp4.h"

#include <QLibrary>

bool writesHybridMp4()
{
    constexpr unsigned kFirstVersion = 61U << 16 | 7U << 8;
    using Version = unsigned (*)();
    // The one beside the program, which libobs' plug-ins use.
    for (const int major : {61, 62, 63, 64}) {
        const auto version =
            reinterpret_cast<Version>(QLibrary::resolve(QStringLiteral("avformat-%1").arg(major), "avformat_version"));
        if (version)
            return version() >= kFirstVersion;
    }
    return false;
}
