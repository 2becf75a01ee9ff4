#pragma once

/// How long the program's own steps take and wait, in milliseconds: what the user gets, unless a test asks for less.
struct Durations
{
    /// Between two numbers of the countdown.
    int countdownStepMs = 1000;
    /// Between two ticks of the recording clock.
    int clockTickMs = 1000;
    /// From the window's construction to the silent check for updates.
    int updateCheckDelayMs = 5000;
    /// Until an update window that may not open asks again.
    int updateNoticeRetryMs = 1000;
    /// How long a window that is minimised may take to be gone from the screen, its compositor's effects included.
    int windowGoneMs = 400;
    /// The floating bar's fade, in and out.
    int toolbarFadeMs = 150;
    /// Between two looks of the floating bar at the pointer.
    int toolbarPointerPollMs = 50;

    /// Between two looks at an encoder that is being drained.
    int drainPollMs = 10;
    /// The longest wait for the encoder, far above what any encoder buffers at 30 frames per second.
    int drainTimeoutMs = 10000;
    /// The same when the user's session ends: the system grants five seconds in all.
    int sessionEndDrainTimeoutMs = 1000;
    /// The longest wait for the engine to report a closed file. A long file on a slow disk takes its time.
    int confirmTimeoutMs = 60000;
};

/// The defaults, with a countdown step from the environment where KESTRANO_COUNTDOWN_STEP_MS has one (1 to 60000):
/// tests start the program with a short countdown. Logs the step that is used, or that the value is broken and ignored.
Durations durationsFromEnvironment();
