// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// In milliseconds. Tests shorten them.
struct Durations
{
    int countdownStepMs = 1000;
    int clockTickMs = 1000;
    int updateCheckDelayMs = 5000;
    int updateNoticeRetryMs = 1000;
    /// A minimised window may be visible for so long, with its compositor's effects.
    int windowGoneMs = 400;
    int toolbarFadeMs = 150;
    int toolbarPointerPollMs = 50;
    /// While nobody points at it.
    int noticeMs = 8000;
    int noticeWithActionMs = 16000;

    /// Between two looks at the file of a recording and its disk.
    int fileWatchMs = 1000;

    int drainPollMs = 10;
    /// Far above what any encoder buffers at 30 frames per second.
    int drainTimeoutMs = 10000;
    /// At the end of a session, for which the system grants five seconds in all.
    int sessionEndDrainTimeoutMs = 3500;
    /// For a closed file. A long file on a slow disk takes its time.
    int confirmTimeoutMs = 60000;
};

/// With a countdown step from the environment variable KESTRANO_COUNTDOWN_STEP_MS (1 to 60000), for tests that start
/// the program. Logs it.
Durations durationsFromEnvironment();
