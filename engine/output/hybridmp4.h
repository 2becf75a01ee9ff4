// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Whether the libavformat that records can write an MP4 in fragments and make it a plain one in the end: since 61.7.
bool writesHybridMp4();
