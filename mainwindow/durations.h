// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The program's own durations, in milliseconds: the user's, unless a test asks for less.
struct Durations
{
    int countdownStepMs = 1000;
    /// Of the recording clock.
    int clockTickMs = 1000;
    /// From the window's construction to the silent check for updates.
    int updateCheckDelayMs = 5000;
    /// Until an update window that may not open tries again.
    int updateNoticeRetryMs = 1000;
    /// How long a minimised window may still be seen, its compositor's effects included.
    int windowGoneMs = 400;
    int toolbarFadeMs = 150;
    int toolbarPointerPollMs = 50;

    int drainPollMs = 10;
    /// Far above what any encoder buffers at 30 frames per second.
    int drainTimeoutMs = 10000;
    /// The same when the user's session ends: the system grants five seconds in all.
    int sessionEndDrainTimeoutMs = 3500;
    /// Until the engine reports a closed file. A long file on a slow disk takes its time.
    int confirmTimeoutMs = 60000;
};

/// The defaults, with a countdown step from the environment variable KESTRANO_COUNTDOWN_STEP_MS (1 to 60000), for tests
/// that start the program. Logs the step that is used, or that the value is ignored.
Durations durationsFromEnvironment();
