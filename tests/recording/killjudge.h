// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/recording/formatjudge.h"

#include <QSize>

#include <cstdint>

/// What a recording of the test pattern and the test tone has lost whose program did not end as it should.
namespace killjudge {

/// Reports a loss of two seconds and more as a failure of the running test, and prints what is lost.
///
/// @param screen size of the recorded video in pixels
/// @param endedNs when the program or its display ended, in CLOCK_MONOTONIC
void check(const formatjudge::Expected& expected, const QString& path, const QSize& screen, int64_t endedNs);

} // namespace killjudge
